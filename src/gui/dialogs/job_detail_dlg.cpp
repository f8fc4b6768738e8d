#include "gui/dialogs/job_detail_dlg.h"

// Placeholder until the dialog lands: behaves as a cancelled dialog.
bool ShowJobDetailDlg(wxWindow*, Scheduler&, JobDlgMode, std::int32_t, std::int32_t*,
                      const std::function<void(std::int32_t)>&)
{
    return false;
}

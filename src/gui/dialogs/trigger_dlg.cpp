#include "gui/dialogs/trigger_dlg.h"

// Placeholder until the dialog lands: behaves as a cancelled dialog.
bool ShowTriggerDlgForTrigger(wxWindow*, Scheduler&, std::int64_t)
{
    return false;
}

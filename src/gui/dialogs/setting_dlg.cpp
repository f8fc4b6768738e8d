#include "gui/dialogs/setting_dlg.h"

// Placeholder until the dialog lands: behaves as a cancelled dialog.
bool ShowSettingDlg(wxWindow*, const SettingDlgContext&)
{
    return false;
}

#include "gui/dialogs/auth_dlg.h"

// Placeholder until the dialog lands: refuses, so nothing is unlocked by it.
bool AskUnlockPassword(wxWindow*)
{
    return false;
}

#include "gui/dialogs/language_dlg.h"

// Placeholder until the dialog lands.
void ShowLanguageChooser(wxWindow*) {}

#include "gui/dialogs/language_dlg.h"

#include <wx/choicdlg.h>
#include <wx/confbase.h>
#include <wx/msgdlg.h>

#include "core/i18n/ui_language.h"
#include "core/prefs/preference.h"

void ShowLanguageChooser(wxWindow* parent, Preference& prefs)
{
    // Written through the preferences' own configuration object: another
    // object on the same file would lose the entry at the next save.
    wxConfigBase* config = prefs.Config();
    if (!config)
        return;
    // Stored codes, in the order of the choices.
    const char* const kCodes[] = {kUiLanguageDefault, kUiLanguageZhCn, kUiLanguageEn, kUiLanguageJa};
    config->SetPath("/");
    const wxString current = config->Read("ui_language", kUiLanguageDefault);
    int selected = 0;
    for (int i = 0; i < 4; ++i)
        if (current == kCodes[i])
            selected = i;

    wxString choices[] = {_("(Use default language)"), _("Chinese (Simplified)"), _("English"), _("Japanese")};
    // Each language also in its own name, so that a reader of that language
    // finds it whatever language the window is in.
    const wxString own[] = {wxString(), wxString::FromUTF8("\xE7\xAE\x80\xE4\xBD\x93\xE4\xB8\xAD\xE6\x96\x87"),
                            "English", wxString::FromUTF8("\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E")};
    for (int i = 0; i < 4; ++i)
        if (!own[i].empty() && own[i] != choices[i])
            choices[i] << L" \u2014 " << own[i];
    wxSingleChoiceDialog dlg(parent, _("Select your prefered language"), _("Language selection"), 4, choices);
    dlg.SetSelection(selected);
    // Its list is sized for a few lines: room for all four and the title.
    wxSize size = dlg.GetSize();
    size.IncTo(dlg.FromDIP(wxSize(340, 300)));
    dlg.SetMinSize(size);
    dlg.SetSize(size);
    dlg.CentreOnParent();
    if (dlg.ShowModal() != wxID_OK || dlg.GetSelection() < 0 || kCodes[dlg.GetSelection()] == current)
        return;
    config->Write("ui_language", kCodes[dlg.GetSelection()]);
    config->Flush();
    wxMessageBox(_("You must restart application for this change to take effect."), _("Confirm"),
                 wxOK | wxICON_INFORMATION, parent);
}

// The three dialogs in the real event loop: every message in order, then what was stored.

#include <functional>

#include <gtest/gtest.h>
#include <wx/checkbox.h>
#include <wx/choicdlg.h>
#include <wx/choice.h>
#include <wx/display.h>
#include <wx/fileconf.h>
#include <wx/scrolwin.h>
#include <wx/listbox.h>
#include <wx/testing.h>
#include <wx/textctrl.h>

#include "core/i18n/ui_language.h"
#include "core/prefs/password_hash.h"
#include "core/prefs/preference.h"
#include "desktop/platform/autostart.h"
#include "gui/dialogs/auth_dlg.h"
#include "gui/dialogs/language_dlg.h"
#include "gui/dialogs/setting_dlg.h"
#include "gui_test_support.h"

namespace {

using guitest::Drive;
using Message = guitest::ExpectMessage;
using guitest::Find;

void Click(wxWindow* dlg, int id) { guitest::Fire(dlg->FindWindow(id)); }

void Type(wxWindow* dlg, const wxString& name, const wxString& text) { Find<wxTextCtrl>(dlg, name)->ChangeValue(text); }

// Shows a dialog that wxTEST_DIALOG keeps from showing, for a screenshot.
void Look(wxTopLevelWindow* dlg, const wxString& name)
{
    dlg->Show();
    EXPECT_TRUE(guitest::WaitFor([dlg] { return dlg->IsActive(); }));
    guitest::SaveScreenshot(dlg, name);
}

TEST(SettingDlg, RefusesInOrderThenStoresEverything)
{
    SettingDlgContext context;
    context.hotKeyStates = {"registered", "taken by another program", "registered", "registered", "not available"};
    context.trayNote = "No notification area in this session: the window hides behind its restore HOTKEY.";
    const auto prefs = Preference::OpenUserPreferences();
    bool ok = false;
    wxTEST_DIALOG(ok = ShowSettingDlg(nullptr, *prefs, context),
                  Drive<SettingDlg>([](SettingDlg* dlg) {
                      Look(dlg, "settings_dialog");
                      // Within the screen; the groups scroll where it is lower.
                      EXPECT_LE(dlg->GetSize().y, wxDisplay(0u).GetClientArea().GetHeight());
                      EXPECT_TRUE(Find<wxScrolledWindow>(dlg, "settingsPage"));
                      EXPECT_EQ(dlg->GetTitle(), "Setting Dialog");
                      EXPECT_EQ(Find<wxChoice>(dlg, "hotkeyCust33")->GetStringSelection(), "6");
                      Find<wxChoice>(dlg, "hotkeyCust33")->SetStringSelection("0");
                      Click(dlg, wxID_OK);
                      Find<wxChoice>(dlg, "hotkeyCust33")->SetStringSelection("Q");
                      // The other refusals: the SettingForm table.
                      Find<wxCheckBox>(dlg, "usePassword")->SetValue(true);
                      Type(dlg, "password", "abc");
                      Type(dlg, "confirmPassword", "abc");
                      Type(dlg, "hotkeyAssociatedJID1", "7");
                      for (const char* box : {"hideTrayIcon", "autostart", "minimizeOnOpenJob"})
                          Find<wxCheckBox>(dlg, box)->SetValue(true);
                      Find<wxChoice>(dlg, "hotkeyPauseMode2")->SetStringSelection("Alt");
                      Click(dlg, wxID_OK);
                      return dlg->GetReturnCode();
                  }),
                  Message("HOTKEY is same, please reset."),
                  Message("HOTKEY setting changed,\nplease remember the HOTKEY setting.\n"
                                "You must restart application for this change to take effect."),
                  Message("Tray's ICON will be hiden, you can use HOTKEY restore window."));
    EXPECT_TRUE(ok);
    EXPECT_TRUE(IsAutostartEnabled());
    // What was saved, read back from the file by a fresh reader.
    wxFileConfig file("Cadrelle", "Vantrel", Preference::UserConfigPath(), wxEmptyString, wxCONFIG_USE_LOCAL_FILE);
    Preference saved(&file);
    saved.Load();
    wxString values;
    for (const char* key : {"hotkeyCust33", "hotkeyPauseMode2", "hotkeyAssociatedJID1", "usePassword", "hideTrayIcon",
                            "minimizeOnOpenJob", "execMissFiredTrigger"})
        values << saved.GetValue(key) << " ";
    EXPECT_EQ(values, "81 1 7 1 1 1 0 ");
    EXPECT_EQ(CheckPassword("abc", saved.GetValue("password")), PasswordCheck::Match);
}

TEST(AuthDlg, RefusesThenWaitsThenUpgradesAnOldPassword)
{
    const auto stored = Preference::OpenUserPreferences();
    Preference& prefs = *stored;
    prefs.SetValue("usePassword", "1");
    prefs.SetValue("password", "secret");  // as older versions stored it
    bool ok = false;
    wxTEST_DIALOG(ok = AskUnlockPassword(nullptr, prefs),
                  Drive<AuthDlg>([](AuthDlg* dlg) {
                      Look(dlg, "auth_dialog");
                      Click(dlg, wxID_OK);
                      Type(dlg, "password", "wrong");
                      Click(dlg, wxID_OK);
                      wxWindow* enter = dlg->FindWindow(wxID_OK);
                      EXPECT_FALSE(enter->IsEnabled()) << "a pause after a wrong password";
                      Type(dlg, "password", "secret");
                      Click(dlg, wxID_OK);  // ignored while disabled
                      EXPECT_TRUE(guitest::WaitFor([enter] { return enter->IsEnabled(); }, 3000));
                      Click(dlg, wxID_OK);
                      return dlg->GetReturnCode();
                  }),
                  Message("Please input password."), Message("Invalid password."));
    EXPECT_TRUE(ok);
    EXPECT_TRUE(IsPasswordHash(prefs.GetValue("password")));
    EXPECT_EQ(CheckPassword("secret", prefs.GetValue("password")), PasswordCheck::Match);
}

// A stored password that no password can match: no dialog asks for one; a
// message says why and how to reset it, and the lock holds.
TEST(AuthDlg, AStoredPasswordThatCannotBeReadIsToldNotAskedFor)
{
    const auto storedPrefs = Preference::OpenUserPreferences();
    Preference& prefs = *storedPrefs;
    for (const char* stored : {"", "$argon2id$v=19$m=65536,t=2,p=1$broken"}) {
        SCOPED_TRACE(stored);
        prefs.SetValue("usePassword", "1");
        prefs.SetValue("password", stored);
        bool ok = true;
        wxTEST_DIALOG(ok = AskUnlockPassword(nullptr, prefs),
                      Message("the window stays locked. To reset it, quit Cadrelle and delete " +
                                  Preference::UserConfigPath(), wxOK, true));
        EXPECT_FALSE(ok);
    }
    prefs.SetValue("usePassword", "0");
    prefs.SetValue("password", "");
}

TEST(LanguageChooser, StoresTheCodeAndKeepsItAcrossSaves)
{
    const auto prefs = Preference::OpenUserPreferences();
    wxTEST_DIALOG(ShowLanguageChooser(nullptr, *prefs),
                  Drive<wxSingleChoiceDialog>([](wxSingleChoiceDialog* dlg) {
                      Look(dlg, "language_chooser");
                      EXPECT_EQ(dlg->GetTitle(), "Language selection");
                      EXPECT_TRUE(wxWindow::FindWindowByLabel("Select your prefered language", dlg));
                      dlg->SetSelection(3);
                      // Each language also in its own name.
                      wxListBox* list = nullptr;
                      for (wxWindow* child : dlg->GetChildren())
                          list = list ? list : dynamic_cast<wxListBox*>(child);
                      EXPECT_TRUE(list);
                      if (list)
                          EXPECT_EQ(list->GetString(3), wxString::FromUTF8("Japanese \xE2\x80\x94 \xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E"));
                      if (list)
                          EXPECT_EQ(list->GetString(2), "English");
                      return wxID_OK;
                  }),
                  Message("You must restart application for this change to take effect.").Caption("Confirm"));
    prefs->SaveSettingParam();
    EXPECT_EQ(ReadUiLanguageSetting(), "ja");
    // The same choice again: preselected, nothing to restart for.
    wxTEST_DIALOG(ShowLanguageChooser(nullptr, *prefs), Drive<wxSingleChoiceDialog>([](wxSingleChoiceDialog* dlg) {
                      EXPECT_EQ(dlg->GetSelection(), 3) << "the stored choice preselected";
                      return wxID_OK;
                  }));
}

}  // namespace

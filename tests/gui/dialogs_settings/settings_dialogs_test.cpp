// The settings dialog, the password lock and the language chooser in the
// real event loop: every refusal message in order, then what was stored.

#include <functional>
#include <memory>

#include <gtest/gtest.h>
#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choicdlg.h>
#include <wx/choice.h>
#include <wx/fileconf.h>
#include <wx/msgdlg.h>
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

// Works the dialog while it is up; returns what ShowModal then returns.
template <class D>
class Drive : public wxExpectModalBase<D, Drive<D>> {
public:
    explicit Drive(std::function<int(D*)> work) : m_work(std::move(work)) {}

protected:
    int OnInvoked(D* dlg) const override { return m_work(dlg); }

private:
    std::function<int(D*)> m_work;
};

class ExpectMessage : public wxExpectModalBase<wxMessageDialog, ExpectMessage> {
public:
    explicit ExpectMessage(const wxString& text, const wxString& caption = "Cadrelle")
        : m_text(text), m_caption(caption)
    {
        m_description = text;
    }

protected:
    int OnInvoked(wxMessageDialog* dlg) const override
    {
        EXPECT_EQ(dlg->GetMessage(), m_text);
        EXPECT_EQ(dlg->GetCaption(), m_caption);
        return wxID_OK;
    }

private:
    wxString m_text, m_caption;
};

template <class T>
T* Find(wxWindow* dlg, const wxString& name)
{
    T* control = dynamic_cast<T*>(guitest::FindByName(name, dlg));
    EXPECT_TRUE(control) << name;
    return control;
}

void Click(wxWindow* dlg, int id)
{
    wxWindow* button = dlg->FindWindow(id);
    ASSERT_TRUE(button);
    wxCommandEvent event(wxEVT_BUTTON, id);
    event.SetEventObject(button);
    button->ProcessWindowEvent(event);
}

void Type(wxWindow* dlg, const wxString& name, const wxString& text)
{
    Find<wxTextCtrl>(dlg, name)->ChangeValue(text);
}

// Shows a dialog that wxTEST_DIALOG keeps from showing, for a screenshot.
void Look(wxWindow* dlg, const wxString& name)
{
    auto painted = std::make_shared<bool>(false);
    auto onPaint = [painted](wxPaintEvent& event) {
        *painted = true;
        event.Skip();
    };
    dlg->Bind(wxEVT_PAINT, onPaint);
    dlg->Show();
    EXPECT_TRUE(guitest::WaitFor([painted] { return *painted; }));
    dlg->Unbind(wxEVT_PAINT, onPaint);
    guitest::SaveScreenshot(dlg, name);
}

TEST(SettingDlg, RefusesInOrderThenStoresEverything)
{
    SettingDlgContext context;
    context.hotKeyStates = {"registered", "taken by another program", "registered", "registered",
                            "not available in this session"};
    bool ok = false;
    wxTEST_DIALOG(ok = ShowSettingDlg(nullptr, context),
                  Drive<SettingDlg>([](SettingDlg* dlg) {
                      Look(dlg, "settings_dialog");
                      EXPECT_EQ(dlg->GetTitle(), "Setting Dialog");
                      EXPECT_EQ(Find<wxChoice>(dlg, "hotkeyCust33")->GetStringSelection(), "6");
                      Find<wxChoice>(dlg, "hotkeyCust33")->SetStringSelection("0");
                      Click(dlg, wxID_OK);
                      Find<wxChoice>(dlg, "hotkeyCust33")->SetStringSelection("Q");
                      Find<wxCheckBox>(dlg, "usePassword")->SetValue(true);
                      Click(dlg, wxID_OK);
                      Type(dlg, "password", "abc");
                      Type(dlg, "confirmPassword", "abd");
                      Click(dlg, wxID_OK);
                      Type(dlg, "hotkeyAssociatedJID1", "x");
                      Type(dlg, "confirmPassword", "abc");
                      Click(dlg, wxID_OK);
                      Type(dlg, "hotkeyAssociatedJID1", "7");
                      for (const char* box : {"hideTrayIcon", "autostart", "minimizeOnOpenJob"})
                          Find<wxCheckBox>(dlg, box)->SetValue(true);
                      Find<wxChoice>(dlg, "hotkeyPauseMode2")->SetStringSelection("Alt");
                      Click(dlg, wxID_OK);
                      return dlg->GetReturnCode();
                  }),
                  ExpectMessage("HOTKEY is same, please reset."), ExpectMessage("Please input password."),
                  ExpectMessage("Two passwords is not same."),
                  ExpectMessage("Customize Hotkey 1: the Associated Job ID must be a job number (0 or more)."),
                  ExpectMessage("HOTKEY setting changed,\nplease remember the HOTKEY setting.\n"
                                "You must restart application for this change to take effect."),
                  ExpectMessage("Tray's ICON will be hiden, you can use HOTKEY restore window."));
    EXPECT_TRUE(ok);
    EXPECT_TRUE(IsAutostartEnabled());
    // What was saved, read back from the file by a fresh reader.
    wxFileConfig file("Cadrelle", "Vantrel", Preference::UserConfigPath(), wxEmptyString, wxCONFIG_USE_LOCAL_FILE);
    Preference saved(&file);
    saved.Load();
    EXPECT_EQ(saved.GetValue("hotkeyCust33"), "81");
    EXPECT_EQ(saved.GetValue("hotkeyPauseMode2"), "1");
    EXPECT_EQ(saved.GetValue("hotkeyAssociatedJID1"), "7");
    EXPECT_EQ(saved.GetValue("usePassword") + saved.GetValue("hideTrayIcon") + saved.GetValue("minimizeOnOpenJob"),
              "111");
    EXPECT_EQ(CheckPassword("abc", saved.GetValue("password")), PasswordCheck::Match);
}

TEST(AuthDlg, RefusesThenWaitsThenUpgradesAnOldPassword)
{
    Preference& prefs = Preference::Instance();
    prefs.SetValue("usePassword", "1");
    prefs.SetValue("password", "secret");  // as older versions stored it
    bool ok = false;
    wxTEST_DIALOG(ok = AskUnlockPassword(nullptr),
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
                  ExpectMessage("Please input password."), ExpectMessage("Invalid password."));
    EXPECT_TRUE(ok);
    EXPECT_TRUE(IsPasswordHash(prefs.GetValue("password")));
    EXPECT_EQ(CheckPassword("secret", prefs.GetValue("password")), PasswordCheck::Match);
}

TEST(LanguageChooser, StoresTheCodeAndKeepsItAcrossSaves)
{
    wxTEST_DIALOG(ShowLanguageChooser(nullptr),
                  Drive<wxSingleChoiceDialog>([](wxSingleChoiceDialog* dlg) {
                      Look(dlg, "language_chooser");
                      EXPECT_EQ(dlg->GetTitle(), "Language selection");
                      EXPECT_TRUE(wxWindow::FindWindowByLabel("Select your prefered language", dlg));
                      EXPECT_EQ(dlg->GetSelection(), 0);
                      dlg->SetSelection(3);
                      return wxID_OK;
                  }),
                  ExpectMessage("You must restart application for this change to take effect.", "Confirm"));
    Preference::Instance().SaveSettingParam();
    EXPECT_EQ(ReadUiLanguageSetting(), "ja");
    // The same choice again: preselected, nothing to restart for.
    wxTEST_DIALOG(ShowLanguageChooser(nullptr), Drive<wxSingleChoiceDialog>([](wxSingleChoiceDialog* dlg) {
                      EXPECT_EQ(dlg->GetSelection(), 3) << "the stored choice preselected";
                      return wxID_OK;
                  }));
}

}  // namespace

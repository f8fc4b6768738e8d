#include "gui/dialogs/auth_dlg.h"

#include <wx/button.h>
#include <wx/filename.h>
#include <wx/image.h>
#include <wx/msgdlg.h>
#include <wx/sizer.h>
#include <wx/statbmp.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <iostream>

#include <wx/log.h>

#include "core/app_dir.h"
#include "core/core_log.h"
#include "core/prefs/password_hash.h"
#include "core/prefs/preference.h"

namespace {

// Our own drawing of a lock and key, where the window's other pictures are:
// the program's img/ (share/cadrelle/img when installed), then the
// repository's assets the program was built from.
wxBitmapBundle LockKeyImage()
{
    wxVector<wxBitmap> bitmaps;
    for (const char* name : {"lock-key-64.png", "lock-key-128.png"}) {
        wxArrayString files;
        files.Add(ResourceDir(ExecutableDir()) + "/img/" + name);
#ifdef CADRELLE_ASSET_DIR
        files.Add(wxString(CADRELLE_ASSET_DIR) + "/" + name);
#endif
        for (const wxString& file : files) {
            wxImage image;
            if (wxFileName::FileExists(file) && image.LoadFile(file, wxBITMAP_TYPE_PNG)) {
                bitmaps.push_back(wxBitmap(image));
                break;
            }
        }
    }
    return wxBitmapBundle::FromBitmaps(bitmaps);
}

}  // namespace

bool AskUnlockPassword(wxWindow* parent, Preference& prefs)
{
    // A stored password that cannot be read matches nothing: asking for one
    // would only answer "Invalid password." for ever. Say so, and how to reset.
    if (prefs.IsPasswordUnreadable()) {
        const wxString text = prefs.PasswordUnreadableMessage();
        wxLogMessage("%d ### %s", LogMs(), text);
        std::cerr << "cadrelle: " << text.utf8_string() << std::endl;
        wxMessageBox(text, "Cadrelle", wxOK | wxICON_ERROR, parent);
        return false;
    }
    AuthDlg dlg(parent, prefs);
    return dlg.ShowModal() == wxID_OK;
}

AuthDlg::AuthDlg(wxWindow* parent, Preference& prefs)
    : wxDialog(parent, wxID_ANY, "Cadrelle", wxDefaultPosition, wxDefaultSize, wxDEFAULT_DIALOG_STYLE, "AuthDlg"),
      m_prefs(prefs)
{
    auto* top = new wxBoxSizer(wxVERTICAL);
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    const wxBitmapBundle image = LockKeyImage();
    if (image.IsOk())
        row->Add(new wxStaticBitmap(this, wxID_ANY, image), wxSizerFlags().Top().Border(wxRIGHT, 12));
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(new wxStaticText(this, wxID_ANY, _("Please input unlock password:")), wxSizerFlags().Border(wxBOTTOM, 6));
    m_pTxtPassword = new wxTextCtrl(this, wxID_ANY, wxString(), wxDefaultPosition, wxSize(FromDIP(260), -1),
                                    wxTE_PASSWORD, wxDefaultValidator, "password");
    column->Add(m_pTxtPassword, wxSizerFlags().Expand());
    row->Add(column, wxSizerFlags(1).CentreVertical());
    top->Add(row, wxSizerFlags(1).Expand().Border(wxALL, 12));

    auto* buttons = new wxStdDialogButtonSizer;
    m_pBtnEnter = new wxButton(this, wxID_OK, _("Enter"));
    buttons->AddButton(m_pBtnEnter);
    buttons->AddButton(new wxButton(this, wxID_CANCEL, _("Exit")));
    buttons->Realize();
    m_pBtnEnter->SetDefault();
    top->Add(buttons, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, 12));
    SetSizerAndFit(top);
    CentreOnParent();
    m_pTxtPassword->SetFocus();

    Bind(wxEVT_BUTTON, &AuthDlg::Onm_pBtnEnterClick, this, wxID_OK);
    m_timerRetry.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { m_pBtnEnter->Enable(); });
}

void AuthDlg::Onm_pBtnEnterClick(wxCommandEvent&)
{
    if (!m_pBtnEnter->IsEnabled())
        return;
    const wxString typed = m_pTxtPassword->GetValue();
    if (typed.empty()) {
        wxMessageBox(_("Please input password."), "Cadrelle", wxOK | wxICON_WARNING, this);
        return;
    }
    Preference& prefs = m_prefs;
    const PasswordCheck check = CheckPassword(typed, prefs.GetValue("password"));
    if (check == PasswordCheck::Wrong) {
        ++m_nFailures;
        m_pTxtPassword->Clear();
        // Disabled before the message so no queued Enter slips through.
        m_pBtnEnter->Disable();
        m_timerRetry.StartOnce(UnlockRetryDelayMs(m_nFailures));
        wxMessageBox(_("Invalid password."), "Cadrelle", wxOK | wxICON_ERROR, this);
        m_pTxtPassword->SetFocus();
        return;
    }
    if (check == PasswordCheck::MatchNeedsUpgrade) {
        // An old plain value, or a weaker hash: replaced now and saved, so the
        // file holds the plain password no longer than this.
        const wxString hash = HashPassword(typed);
        if (!hash.empty()) {
            prefs.SetValue("password", hash);
            prefs.SaveSettingParam();
        }
    }
    SetReturnCode(wxID_OK);
    EndDialog(wxID_OK);
}

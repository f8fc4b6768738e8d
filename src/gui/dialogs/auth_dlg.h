#pragma once
// The password lock.

#include <wx/dialog.h>
#include <wx/timer.h>

class Preference;
class wxButton;
class wxTextCtrl;
class wxWindow;

// Asks for the unlock password modally; true only when the right password
// was entered ("Enter"), false for "Exit" or a closed dialog.
bool AskUnlockPassword(wxWindow* parent, Preference& prefs);

// The dialog itself: the field is named "password", the buttons are wxID_OK
// ("Enter") and wxID_CANCEL ("Exit"). After each wrong password "Enter"
// stays disabled a little longer (UnlockRetryDelayMs) while the event loop
// runs on.
class AuthDlg : public wxDialog {
public:
    AuthDlg(wxWindow* parent, Preference& prefs);

private:
    void Onm_pBtnEnterClick(wxCommandEvent& event);

    Preference& m_prefs;
    wxTextCtrl* m_pTxtPassword = nullptr;
    wxButton* m_pBtnEnter = nullptr;
    wxTimer m_timerRetry;
    int m_nFailures = 0;
};

#pragma once
// The settings dialog.

#include <array>

#include <wx/dialog.h>
#include <wx/string.h>

#include "core/prefs/setting_rules.h"

class Preference;
class wxCheckBox;
class wxChoice;
class wxStaticText;
class wxTextCtrl;
class wxWindow;

// What the dialog shows about this session besides the preferences.
struct SettingDlgContext {
    // Per hot key, in the order restore, pause, custom 1, 2, 3: "registered",
    // "taken by another program" or "not available in this session" (shown
    // next to the key's controls).
    std::array<wxString, 5> hotKeyStates;
    // Empty when the window can hide to a tray; otherwise why it cannot.
    wxString trayNote;
};

// Opens the dialog modally; true when the user pressed OK and the
// preferences were stored and saved.
bool ShowSettingDlg(wxWindow* parent, Preference& prefs, const SettingDlgContext& context);

// The dialog itself. Its controls are named after the preference they edit
// ("minimizeOnOpenJob", "hotkeyCust13", ...; "autostart", "confirmPassword").
class SettingDlg : public wxDialog {
public:
    SettingDlg(wxWindow* parent, Preference& prefs, const SettingDlgContext& context);

private:
    void BuildJobGroup(wxWindow* panel, wxSizer* top);
    void BuildApplicationGroup(wxWindow* panel, wxSizer* top);
    void BuildAdvancedGroup(wxWindow* panel, wxSizer* top, const wxString& trayNote);
    void BuildHotKeyGroup(wxWindow* panel, wxSizer* top, const SettingDlgContext& context);
    wxCheckBox* AddCheck(wxWindow* parent, wxSizer* sizer, const wxString& label, const wxString& name);

    void ShowForm(const SettingForm& form);
    SettingForm ReadForm() const;
    void UpdatePasswordFields();
    void Onm_pBtnOKClick(wxCommandEvent& event);

    wxCheckBox* m_pChkMinimizeOnOpenJob = nullptr;
    wxCheckBox* m_pChkExecMissFiredTrigger = nullptr;
    wxCheckBox* m_pChkHideNotifyWnd = nullptr;
    wxCheckBox* m_pChkAutostart = nullptr;
    wxCheckBox* m_pChkPreserveMainFrmSize = nullptr;
    wxCheckBox* m_pChkHideMainFrmClickCloseBtn = nullptr;
    wxCheckBox* m_pChkUsePassword = nullptr;
    wxTextCtrl* m_pTxtPassword = nullptr;
    wxTextCtrl* m_pTxtConfirmPassword = nullptr;
    wxCheckBox* m_pChkMinimizeOnAppStart = nullptr;
    wxCheckBox* m_pChkHideTrayIcon = nullptr;
    std::array<wxChoice*, kHotKeyCount> m_pChModifier{};
    std::array<wxChoice*, kHotKeyCount> m_pChKey{};
    std::array<wxTextCtrl*, kCustomHotKeyCount> m_pTxtJid{};
    Preference& m_prefs;
    wxString m_storedPassword;
};

#include "gui/dialogs/setting_dlg.h"

#include <algorithm>

#include <wx/display.h>
#include <wx/scrolwin.h>
#include <wx/settings.h>

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/msgdlg.h>
#include <wx/sizer.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/valtext.h>

#include "core/prefs/preference.h"
#include "desktop/platform/autostart.h"

namespace {

const int kGap = 6;

wxArrayString KeyChoices()
{
    wxArrayString keys;
    for (const char* c = kHotKeyCharacters; *c; ++c)
        keys.Add(wxString(*c));
    return keys;
}

}  // namespace

bool ShowSettingDlg(wxWindow* parent, Preference& prefs, const SettingDlgContext& context)
{
    SettingDlg dlg(parent, prefs, context);
    return dlg.ShowModal() == wxID_OK;
}

SettingDlg::SettingDlg(wxWindow* parent, Preference& prefs, const SettingDlgContext& context)
    : wxDialog(parent, wxID_ANY, _("Setting Dialog"), wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER, "SettingDlg"),
      m_prefs(prefs)
{
    m_storedPassword = prefs.GetValue("password");
    // The groups scroll when the screen is lower than the dialog (about
    // 850 px in English; a 768-px screen has less); the buttons stay.
    auto* page = new wxScrolledWindow(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxVSCROLL, "settingsPage");
    auto* groups = new wxBoxSizer(wxVERTICAL);
    BuildJobGroup(page, groups);
    BuildApplicationGroup(page, groups);
    BuildAdvancedGroup(page, groups, context.trayNote);
    BuildHotKeyGroup(page, groups, context);
    page->SetSizer(groups);
    page->SetScrollRate(0, FromDIP(10));
    const wxSize whole = groups->CalcMin();
    const int display = wxDisplay(wxDisplay::GetFromWindow(parent ? parent : this) == wxNOT_FOUND
                                      ? 0u
                                      : static_cast<unsigned>(wxDisplay::GetFromWindow(parent ? parent : this)))
                            .GetClientArea()
                            .GetHeight();
    const int buttonsAndFrame = FromDIP(110);
    page->SetMinSize(wxSize(whole.x + wxSystemSettings::GetMetric(wxSYS_VSCROLL_X),
                            std::min(whole.y, std::max(FromDIP(200), display - buttonsAndFrame))));
    auto* top = new wxBoxSizer(wxVERTICAL);
    top->Add(page, wxSizerFlags(1).Expand());
    top->Add(CreateSeparatedButtonSizer(wxOK | wxCANCEL), wxSizerFlags().Expand().Border(wxALL, kGap * 2));
    SetSizerAndFit(top);
    CentreOnParent();

    ShowForm(FormFromSettings(prefs, IsAutostartEnabled()));
    m_pChkUsePassword->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent&) { UpdatePasswordFields(); });
    Bind(wxEVT_BUTTON, &SettingDlg::Onm_pBtnOKClick, this, wxID_OK);
}

wxCheckBox* SettingDlg::AddCheck(wxWindow* parent, wxSizer* sizer, const wxString& label, const wxString& name)
{
    auto* box = new wxCheckBox(parent, wxID_ANY, label, wxDefaultPosition, wxDefaultSize, 0,
                               wxDefaultValidator, name);
    sizer->Add(box, wxSizerFlags().Border(wxALL, kGap / 2));
    return box;
}

void SettingDlg::BuildJobGroup(wxWindow* panel, wxSizer* top)
{
    auto* group = new wxStaticBoxSizer(wxVERTICAL, panel, _("Job Related Settings"));
    wxWindow* box = group->GetStaticBox();
    m_pChkMinimizeOnOpenJob = AddCheck(
        box, group, _("Minimize window for execute: Open File/Open Folder/DOS Command/Batch File"), "minimizeOnOpenJob");
    m_pChkExecMissFiredTrigger =
        AddCheck(box, group,
                 _("Refire miss fired trigger, when application start\n (Exclude With Start/IdleTimeout type triggers)"),
                 "execMissFiredTrigger");
    m_pChkHideNotifyWnd = AddCheck(box, group,
                                   _("Do not show Notify Window when execute "
                                     "Shutdown/Reboot/Logoff/Suspend/\nHibernates/Lock Workstation/Shutoff "
                                     "Display/Empty Recyclebin/Close App"),
                                   "hideNotifyWnd");
    top->Add(group, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxTOP, kGap * 2));
}

void SettingDlg::BuildApplicationGroup(wxWindow* panel, wxSizer* top)
{
    auto* group = new wxStaticBoxSizer(wxVERTICAL, panel, _("Application Settings"));
    wxWindow* box = group->GetStaticBox();
    m_pChkAutostart = AddCheck(box, group, _("Start with Windows startup"), "autostart");
    m_pChkPreserveMainFrmSize = AddCheck(box, group, _("Preserve window positon and size"), "preserveMainFrmSize");
    m_pChkHideMainFrmClickCloseBtn =
        AddCheck(box, group, _("When click window's close button, NOT close app only minimize and hide window"),
                 "hideMainFrmClickCloseBtn");
    top->Add(group, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxTOP, kGap * 2));
}

void SettingDlg::BuildAdvancedGroup(wxWindow* panel, wxSizer* top, const wxString& trayNote)
{
    auto* group = new wxStaticBoxSizer(wxVERTICAL, panel, _("Advanced Settings"));
    wxWindow* box = group->GetStaticBox();
    m_pChkUsePassword = AddCheck(box, group, _("Lock the application with a password"), "usePassword");

    auto* fields = new wxFlexGridSizer(2, kGap, kGap * 2);
    fields->AddGrowableCol(1);
    m_pTxtPassword = new wxTextCtrl(box, wxID_ANY, wxString(), wxDefaultPosition, wxDefaultSize, wxTE_PASSWORD,
                                    wxDefaultValidator, "password");
    m_pTxtConfirmPassword = new wxTextCtrl(box, wxID_ANY, wxString(), wxDefaultPosition, wxDefaultSize,
                                           wxTE_PASSWORD, wxDefaultValidator, "confirmPassword");
    fields->Add(new wxStaticText(box, wxID_ANY, _("Password:")), wxSizerFlags().CentreVertical());
    fields->Add(m_pTxtPassword, wxSizerFlags().Expand());
    fields->Add(new wxStaticText(box, wxID_ANY, _("Confirm Password:")), wxSizerFlags().CentreVertical());
    fields->Add(m_pTxtConfirmPassword, wxSizerFlags().Expand());
    // The stored password is a hash: it cannot be shown, only kept or replaced.
    if (!m_storedPassword.empty()) {
        fields->AddSpacer(0);
        fields->Add(new wxStaticText(box, wxID_ANY, _("Leave both fields empty to keep the current password.")));
    }
    // Indented under their box, a gap on the right like the box's own.
    auto* indent = new wxBoxSizer(wxHORIZONTAL);
    indent->AddSpacer(kGap * 4);
    indent->Add(fields, wxSizerFlags(1));
    group->Add(indent, wxSizerFlags().Expand().Border(wxRIGHT | wxBOTTOM, kGap));

    m_pChkMinimizeOnAppStart =
        AddCheck(box, group, _("Minimize window to the tray when application start"), "minimizeOnAppStart");
    m_pChkHideTrayIcon = AddCheck(
        box, group, _("Hide tray icon when window is minimized or closed\n (balloon reminders will be disabled)"),
        "hideTrayIcon");
    if (!trayNote.empty()) {
        auto* note = new wxStaticText(box, wxID_ANY, trayNote, wxDefaultPosition, wxDefaultSize, 0, "trayNote");
        note->Wrap(FromDIP(480));
        group->Add(note, wxSizerFlags().Border(wxALL, kGap));
    }
    top->Add(group, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxTOP, kGap * 2));
}

void SettingDlg::BuildHotKeyGroup(wxWindow* panel, wxSizer* top, const SettingDlgContext& context)
{
    auto* group = new wxStaticBoxSizer(wxVERTICAL, panel, _("HOTKEY Settings (Need RESTART the application to take effect)"));
    wxWindow* box = group->GetStaticBox();
    const wxString labels[kHotKeyCount] = {_("Restore main window:"), _("Open/Close pause mode:"),
                                           _("Customize Hotkey 1:"), _("Customize Hotkey 2:"),
                                           _("Customize Hotkey 3:")};
    const wxArrayString keys = KeyChoices();
    const wxString modifiers[] = {_("Shift"), _("Alt")};
    auto* grid = new wxFlexGridSizer(7, kGap, kGap);
    grid->AddGrowableCol(6);
    for (int i = 0; i < kHotKeyCount; ++i) {
        const auto names = HotKeyPreferenceKeys(i);
        grid->Add(new wxStaticText(box, wxID_ANY, labels[i]), wxSizerFlags().CentreVertical());
        // Registration always adds Ctrl: the choice shows it, fixed.
        const wxString ctrl[] = {_("Ctrl")};
        auto* ctrlChoice = new wxChoice(box, wxID_ANY, wxDefaultPosition, wxDefaultSize, 1, ctrl);
        ctrlChoice->SetSelection(0);
        ctrlChoice->Disable();
        grid->Add(ctrlChoice, wxSizerFlags().CentreVertical());
        m_pChModifier[i] = new wxChoice(box, wxID_ANY, wxDefaultPosition, wxDefaultSize, 2, modifiers, 0,
                                        wxDefaultValidator, names.first);
        grid->Add(m_pChModifier[i], wxSizerFlags().CentreVertical());
        m_pChKey[i] = new wxChoice(box, wxID_ANY, wxDefaultPosition, wxDefaultSize, keys, 0, wxDefaultValidator,
                                   names.second);
        grid->Add(m_pChKey[i], wxSizerFlags().CentreVertical());
        if (i >= 2) {
            const int c = i - 2;
            grid->Add(new wxStaticText(box, wxID_ANY, _("Associated Job ID:")), wxSizerFlags().CentreVertical());
            m_pTxtJid[c] = new wxTextCtrl(box, wxID_ANY, wxString(), wxDefaultPosition,
                                          wxSize(FromDIP(64), -1), 0, wxTextValidator(wxFILTER_DIGITS),
                                          wxString::Format("hotkeyAssociatedJID%d", c + 1));
            grid->Add(m_pTxtJid[c], wxSizerFlags().CentreVertical());
        } else {
            grid->AddSpacer(0);
            grid->AddSpacer(0);
        }
        grid->Add(new wxStaticText(box, wxID_ANY, context.hotKeyStates[i], wxDefaultPosition, wxDefaultSize, 0,
                                   wxString::Format("hotKeyState%d", i)),
                  wxSizerFlags().CentreVertical().Border(wxLEFT, kGap));
    }
    group->Add(grid, wxSizerFlags().Expand().Border(wxALL, kGap));
    top->Add(group, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxTOP, kGap * 2));
}

void SettingDlg::ShowForm(const SettingForm& form)
{
    m_pChkMinimizeOnOpenJob->SetValue(form.minimizeOnOpenJob);
    m_pChkExecMissFiredTrigger->SetValue(form.execMissFiredTrigger);
    m_pChkHideNotifyWnd->SetValue(form.hideNotifyWnd);
    m_pChkAutostart->SetValue(form.autostart);
    m_pChkPreserveMainFrmSize->SetValue(form.preserveMainFrmSize);
    m_pChkHideMainFrmClickCloseBtn->SetValue(form.hideMainFrmClickCloseBtn);
    m_pChkUsePassword->SetValue(form.usePassword);
    m_pChkMinimizeOnAppStart->SetValue(form.minimizeOnAppStart);
    m_pChkHideTrayIcon->SetValue(form.hideTrayIcon);
    for (int i = 0; i < kHotKeyCount; ++i) {
        m_pChModifier[i]->SetSelection(form.hotKeys[i].modifiers == kHotKeyAlt ? 1 : 0);
        m_pChKey[i]->SetSelection(m_pChKey[i]->FindString(wxString(wxUniChar(form.hotKeys[i].keyCode))));
    }
    for (int i = 0; i < kCustomHotKeyCount; ++i)
        m_pTxtJid[i]->ChangeValue(form.associatedJids[i]);
    UpdatePasswordFields();
}

SettingForm SettingDlg::ReadForm() const
{
    SettingForm form;
    form.minimizeOnOpenJob = m_pChkMinimizeOnOpenJob->GetValue();
    form.execMissFiredTrigger = m_pChkExecMissFiredTrigger->GetValue();
    form.hideNotifyWnd = m_pChkHideNotifyWnd->GetValue();
    form.autostart = m_pChkAutostart->GetValue();
    form.preserveMainFrmSize = m_pChkPreserveMainFrmSize->GetValue();
    form.hideMainFrmClickCloseBtn = m_pChkHideMainFrmClickCloseBtn->GetValue();
    form.usePassword = m_pChkUsePassword->GetValue();
    form.password = m_pTxtPassword->GetValue();
    form.confirmPassword = m_pTxtConfirmPassword->GetValue();
    form.minimizeOnAppStart = m_pChkMinimizeOnAppStart->GetValue();
    form.hideTrayIcon = m_pChkHideTrayIcon->GetValue();
    for (int i = 0; i < kHotKeyCount; ++i) {
        form.hotKeys[i].modifiers = m_pChModifier[i]->GetSelection() == 1 ? kHotKeyAlt : kHotKeyShift;
        const int key = m_pChKey[i]->GetSelection();
        form.hotKeys[i].keyCode = key >= 0 ? kHotKeyCharacters[key] : '0';
    }
    for (int i = 0; i < kCustomHotKeyCount; ++i)
        form.associatedJids[i] = m_pTxtJid[i]->GetValue();
    return form;
}

void SettingDlg::UpdatePasswordFields()
{
    const bool on = m_pChkUsePassword->GetValue();
    m_pTxtPassword->Enable(on);
    m_pTxtConfirmPassword->Enable(on);
}

void SettingDlg::Onm_pBtnOKClick(wxCommandEvent&)
{
    const SettingForm form = ReadForm();
    const wxString refusal = ValidateSettingForm(form, m_storedPassword);
    if (!refusal.empty()) {
        wxMessageBox(refusal, "Cadrelle", wxOK | wxICON_WARNING, this);
        return;
    }
    Preference& prefs = m_prefs;
    const std::vector<wxString> notices = SettingChangeNotices(prefs, form);
    // A failure is logged by SetAutostart; the other settings are stored anyway.
    SetAutostart(form.autostart, RunningExecutablePath());
    for (const auto& value : SettingValues(form, m_storedPassword))
        prefs.SetValue(value.first, value.second);
    prefs.SaveSettingParam();
    for (const wxString& notice : notices)
        wxMessageBox(notice, "Cadrelle", wxOK | wxICON_INFORMATION, this);
    SetReturnCode(wxID_OK);
    EndDialog(wxID_OK);
}

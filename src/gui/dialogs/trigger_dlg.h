#pragma once
// The trigger dialog: creates and edits one trigger.

#include <array>
#include <cstdint>

#include <wx/dialog.h>

#include "core/triggers/trigger.h"
#include "gui/logic/trigger_form.h"

class Scheduler;
class wxBoxSizer;
class wxButton;
class wxCheckBox;
class wxCheckListBox;
class wxChoice;
class wxDatePickerCtrl;
class wxRadioButton;
class wxStaticBoxSizer;
class wxTextCtrl;
class wxTimePickerCtrl;
class wxWindow;

// Edits trigger `tid` modally. True when the user confirmed a change, which
// has then been applied through the scheduler (under its edit lock) and the
// data marked changed; false when cancelled or nothing was changed.
bool ShowTriggerDlgForTrigger(wxWindow* parent, Scheduler& scheduler, std::int64_t tid);

// Edits a trigger's record modally (a new one when its condition is empty).
// On OK the kind, CONDITION, START and END of `param` are replaced and true
// is returned; the caller applies it.
bool EditTriggerParam(wxWindow* parent, const SessionContext& context, TriggerParam& param);

class TriggerDlg : public wxDialog {
public:
    TriggerDlg(wxWindow* parent, const SessionContext& context, const TriggerParam& initial);

    // The record as confirmed (valid after ShowModal returned wxID_OK).
    const TriggerParam& Result() const { return m_result; }
    // The form the controls show now.
    TriggerForm GetForm() const;
    void SetForm(const TriggerForm& form);
    // The text of the live preview.
    wxString PreviewText() const;
    // The sentence under it: the condition in words.
    wxString DescriptionText() const;

private:
    void BuildKinds(wxBoxSizer* top);
    void BuildFields(wxBoxSizer* top);
    void BuildValues(wxBoxSizer* top);
    void BuildPeriod(wxBoxSizer* top);
    std::uint32_t SelectedKind() const;
    void ShowKindControls();
    void UpdatePreview();
    void OnAnyChange();
    void OnOk();
    void OnTest();

    const SessionContext& m_context;
    TriggerParam m_result;
    std::array<wxRadioButton*, NTriggerTypeCount> m_pKind{};
    std::array<wxCheckBox*, FieldCount> m_pAll{};
    std::array<wxCheckListBox*, FieldCount> m_pList{};
    wxChoice* m_pDays = nullptr;
    wxChoice* m_pHours = nullptr;
    wxChoice* m_pMinutes = nullptr;
    wxChoice* m_pSeconds = nullptr;
    wxChoice* m_pAmount = nullptr;
    wxChoice* m_pUnit = nullptr;
    wxDatePickerCtrl* m_pSpecDate = nullptr;
    wxTimePickerCtrl* m_pSpecTime = nullptr;
    wxDatePickerCtrl* m_pStartDate = nullptr;
    wxTimePickerCtrl* m_pStartTime = nullptr;
    wxDatePickerCtrl* m_pEndDate = nullptr;
    wxTimePickerCtrl* m_pEndTime = nullptr;
    wxTextCtrl* m_pPreview = nullptr;
    class wxStaticText* m_pDescription = nullptr;
    wxString m_strDescription;  // unwrapped
    wxWindow* m_pFieldsPanel = nullptr;
    wxWindow* m_pDurationPanel = nullptr;
    wxWindow* m_pAmountPanel = nullptr;
    class wxStaticText* m_pAmountLabel = nullptr;
    wxWindow* m_pSpecPanel = nullptr;
    wxStaticBoxSizer* m_pPeriodBox = nullptr;
    std::array<wxWindow*, FieldCount> m_pFieldColumn{};
    bool m_bLoading = false;
};

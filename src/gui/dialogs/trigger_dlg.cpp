#include "gui/dialogs/trigger_dlg.h"

#include <memory>

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/checklst.h>
#include <wx/choice.h>
#include <wx/datectrl.h>
#include <wx/dateevt.h>
#include <wx/msgdlg.h>
#include <wx/panel.h>
#include <wx/radiobut.h>
#include <wx/sizer.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/timectrl.h>

#include "core/datetime_text.h"
#include "core/scheduler.h"
#include "core/session/session_context.h"
#include "core/triggers/trigger_description.h"

namespace {

struct KindControl {
    std::uint32_t kind;
    const char* label;
    const char* name;
};

// In the order the dialog lists them.
const KindControl kKinds[NTriggerTypeCount] = {
    {NTriggerTypeEveryMinute, wxTRANSLATE("Every Minute"), "ID_RADIOBUTTON_MIN"},
    {NTriggerTypeEveryHour, wxTRANSLATE("Every Hour"), "ID_RADIOBUTTON_EVERYHOUR"},
    {NTriggerTypeEveryDay, wxTRANSLATE("Every Day"), "ID_RADIOBUTTON_EVERYDAY"},
    {NTriggerTypeEveryWeek, wxTRANSLATE("Every Week"), "ID_RADIOBUTTON_EVERYWEEK"},
    {NTriggerTypeEveryMonth, wxTRANSLATE("Every Month"), "ID_RADIOBUTTON_EVERYMONTH"},
    {NTriggerTypeEveryYear, wxTRANSLATE("Every Year"), "ID_RADIOBUTTON_EVERYYEAR"},
    {NTriggerTypeCron, wxTRANSLATE("C&ron"), "ID_RADIOBUTTON_CORN"},
    {NTriggerTypeInterval, wxTRANSLATE("Interval"), "ID_RADIOBUTTON_INTERVAL"},
    {NTriggerTypeCountDown, wxTRANSLATE("Count &Down"), "ID_RADIOBUTTON_COUNTDOWN"},
    {NTriggerTypeWithStart, wxTRANSLATE("&With Start"), "ID_RADIOBUTTON_WITH_START"},
    {NTriggerTypeIdleTimeout, wxTRANSLATE("Idle Timeout"), "ID_RADIOBUTTON_IDLE_TIMEOUT"},
    {NTriggerTypeSpecTime, wxTRANSLATE("&Special Time"), "ID_RADIOBUTTON_SEPC_TIME"},
};

struct FieldControl {
    const char* label;  // padded so the columns line up
    const char* boxName;
    const char* listName;
};

const FieldControl kFields[FieldCount] = {
    {wxTRANSLATE("Seconds        |"), "ID_CHECKBOX_SECONDS", "ID_CHECKLISTBOX1"},
    {wxTRANSLATE("Minutes        |"), "ID_CHECKBOX_MINUTES", "ID_CHECKLISTBOX_MIN"},
    {wxTRANSLATE("Hours            |"), "ID_CHECKBOX_HOURS", "ID_CHECKLISTBOX_HOUR"},
    {wxTRANSLATE("Days              |"), "ID_CHECKBOX_DAYS", "ID_CHECKLISTBOX_DAYS"},
    {wxTRANSLATE("Weekdays     |"), "ID_CHECKBOX_WEEKDAYS", "ID_CHECKLISTBOX_WEEK"},
    {wxTRANSLATE("Months         |"), "ID_CHECKBOX_MONTHS", "ID_CHECKLISTBOX_MONTH"},
};

void ShowMessage(wxWindow* parent, const wxString& text)
{
    wxMessageBox(text, "Cadrelle", wxOK | wxCENTRE, parent);
}

wxChoice* NumberChoice(wxWindow* parent, const char* name, int from, int to)
{
    wxArrayString items;
    for (int i = from; i <= to; ++i)
        items.Add(wxString::Format("%d", i));
    auto* choice = new wxChoice(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, items);
    choice->SetName(name);
    return choice;
}

void SelectNumber(wxChoice* choice, int value)
{
    const int index = choice->FindString(wxString::Format("%d", value));
    choice->SetSelection(index == wxNOT_FOUND ? 0 : index);
}

int SelectedNumber(const wxChoice* choice)
{
    long value = 0;
    choice->GetStringSelection().ToLong(&value);
    return static_cast<int>(value);
}

wxDateTime Combine(const wxDatePickerCtrl* date, const wxTimePickerCtrl* time)
{
    wxDateTime dt = date->GetValue();
    int h = 0, m = 0, s = 0;
    time->GetTime(&h, &m, &s);
    dt.SetHour(h);
    dt.SetMinute(m);
    dt.SetSecond(s);
    dt.SetMillisecond(0);
    return dt;
}

void Spread(const wxDateTime& dt, wxDatePickerCtrl* date, wxTimePickerCtrl* time)
{
    if (!dt.IsValid())
        return;
    date->SetValue(dt);
    time->SetTime(dt.GetHour(), dt.GetMinute(), dt.GetSecond());
}

}  // namespace

TriggerDlg::TriggerDlg(wxWindow* parent, const SessionContext& context, const TriggerParam& initial)
    : wxDialog(parent, wxID_ANY, _("Trigger Dialog"), wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      m_context(context), m_result(initial)
{
    // Top to bottom: the kind, its own controls, the period, the preview.
    auto* top = new wxBoxSizer(wxVERTICAL);
    BuildKinds(top);
    auto* values = new wxBoxSizer(wxVERTICAL);
    BuildFields(values);
    BuildValues(values);
    top->Add(values, 0, wxEXPAND | wxLEFT | wxRIGHT, 8);
    BuildPeriod(top);

    auto* previewBox = new wxStaticBoxSizer(wxVERTICAL, this, _("Next moments"));
    m_pPreview = new wxTextCtrl(previewBox->GetStaticBox(), wxID_ANY, wxString(), wxDefaultPosition,
                                wxSize(-1, 110), wxTE_MULTILINE | wxTE_READONLY);
    m_pPreview->SetName("ID_TEXTCTRL_PREVIEW");
    previewBox->Add(m_pPreview, 1, wxEXPAND | wxALL, 3);
    // The condition in words, as the trigger list will show it.
    m_pDescription = new wxStaticText(previewBox->GetStaticBox(), wxID_ANY, wxString(), wxDefaultPosition,
                                      wxDefaultSize, wxST_NO_AUTORESIZE);
    m_pDescription->SetName("ID_STATICTEXT_DESCRIPTION");
    previewBox->Add(m_pDescription, 0, wxEXPAND | wxALL, 3);
    top->Add(previewBox, 1, wxEXPAND | wxLEFT | wxRIGHT, 8);

    auto* buttons = new wxBoxSizer(wxHORIZONTAL);
    auto* test = new wxButton(this, wxID_ANY, _("Test"));
    test->SetName("ID_BUTTON_TEST");
    buttons->Add(test, 0, wxALL, 5);
    buttons->AddStretchSpacer();
    auto* ok = new wxButton(this, wxID_OK, _("&OK"));
    ok->SetName("ID_BUTTON_OK");
    auto* cancel = new wxButton(this, wxID_CANCEL, _("&Cancel"));
    cancel->SetName("ID_BUTTON_CANCEL");
    buttons->Add(ok, 0, wxALL, 5);
    buttons->Add(cancel, 0, wxALL, 5);
    top->Add(buttons, 0, wxEXPAND | wxALL, 5);
    SetSizer(top);
    ok->SetDefault();

    test->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OnTest(); });
    ok->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OnOk(); });
    Bind(wxEVT_RADIOBUTTON, [this](wxCommandEvent&) {
        ShowKindControls();
        OnAnyChange();
    });
    Bind(wxEVT_CHECKBOX, [this](wxCommandEvent&) { OnAnyChange(); });
    Bind(wxEVT_CHECKLISTBOX, [this](wxCommandEvent&) { OnAnyChange(); });
    Bind(wxEVT_CHOICE, [this](wxCommandEvent&) { OnAnyChange(); });
    Bind(wxEVT_DATE_CHANGED, [this](wxDateEvent&) { OnAnyChange(); });
    Bind(wxEVT_TIME_CHANGED, [this](wxDateEvent&) { OnAnyChange(); });

    const wxDateTime now = wxDateTime::Now();
    TriggerForm form = DefaultTriggerForm(initial.condition.empty() ? NTriggerTypeEveryDay : initial.type, now);
    if (!initial.condition.empty()) {
        wxString error;
        if (!ReadTriggerTexts(initial.type, initial.condition, initial.start, initial.end, form, error))
            ShowMessage(parent, error);
    }
    SetForm(form);
    Fit();
    SetMinSize(GetSize());
    CentreOnParent();
    // The chosen kind, not the last field built (the end time), so that a
    // first key press does not change a value unseen.
    if (form.kind < NTriggerTypeCount)
        m_pKind[form.kind]->SetFocus();
}

void TriggerDlg::BuildKinds(wxBoxSizer* top)
{
    auto* box = new wxStaticBoxSizer(wxVERTICAL, this, _("Trigger Kind"));
    auto* grid = new wxGridSizer(2, 6, 2, 8);
    for (std::size_t i = 0; i < NTriggerTypeCount; ++i) {
        const KindControl& k = kKinds[i];
        auto* radio = new wxRadioButton(box->GetStaticBox(), wxID_ANY, wxGetTranslation(k.label), wxDefaultPosition,
                                        wxDefaultSize, i == 0 ? wxRB_GROUP : 0);
        radio->SetName(k.name);
        m_pKind[k.kind] = radio;
        grid->Add(radio, 0, wxALL, 2);
    }
    box->Add(grid, 0, wxEXPAND);
    top->Add(box, 0, wxEXPAND | wxALL, 8);
}

void TriggerDlg::BuildFields(wxBoxSizer* top)
{
    auto* panel = new wxPanel(this);
    m_pFieldsPanel = panel;
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    for (int f = 0; f < FieldCount; ++f) {
        auto* column = new wxPanel(panel);
        auto* sizer = new wxBoxSizer(wxVERTICAL);
        m_pAll[f] = new wxCheckBox(column, wxID_ANY, wxGetTranslation(kFields[f].label));
        m_pAll[f]->SetName(kFields[f].boxName);
        m_pAll[f]->SetToolTip(_("Every value of this field"));
        wxArrayString items;
        for (int v = FieldMin(f); v <= FieldMax(f); ++v) {
            if (f == FieldWeekdays)
                items.Add(WeekdayName(v));
            else if (f == FieldMonths)
                items.Add(MonthName(v));
            else
                items.Add(wxString::Format("%d", v));
        }
        m_pList[f] = new wxCheckListBox(column, wxID_ANY, wxDefaultPosition, wxSize(95, 190), items);
        m_pList[f]->SetName(kFields[f].listName);
        sizer->Add(m_pAll[f], 0, wxBOTTOM, 2);
        sizer->Add(m_pList[f], 1, wxEXPAND);
        column->SetSizer(sizer);
        m_pFieldColumn[f] = column;
        row->Add(column, 0, wxEXPAND | wxRIGHT, 4);
    }
    panel->SetSizer(row);
    top->Add(panel, 0, wxEXPAND);
}

void TriggerDlg::BuildValues(wxBoxSizer* top)
{
    // Count Down and With Start: a duration.
    auto* duration = new wxPanel(this);
    auto* d = new wxBoxSizer(wxHORIZONTAL);
    m_pDays = NumberChoice(duration, "ID_CHOICE6", 0, 365);
    m_pHours = NumberChoice(duration, "ID_CHOICE7", 0, 23);
    m_pMinutes = NumberChoice(duration, "ID_CHOICE8", 0, 59);
    m_pSeconds = NumberChoice(duration, "ID_CHOICE9", 0, 59);
    const std::pair<wxChoice*, wxString> parts[] = {
        {m_pDays, _("Days")}, {m_pHours, _("Hours")}, {m_pMinutes, _("Mintues")}, {m_pSeconds, _("Seconds")}};
    for (const auto& part : parts) {
        d->Add(part.first, 0, wxALIGN_CENTER_VERTICAL);
        d->Add(new wxStaticText(duration, wxID_ANY, part.second), 0, wxALIGN_CENTER_VERTICAL | wxLEFT | wxRIGHT, 4);
    }
    duration->SetSizer(d);
    m_pDurationPanel = duration;
    top->Add(duration, 0, wxTOP, 5);

    // Interval and Idle Timeout: an amount of a unit.
    auto* amount = new wxPanel(this);
    auto* a = new wxBoxSizer(wxHORIZONTAL);
    m_pAmountLabel = new wxStaticText(amount, wxID_ANY, _("Idle for"));
    a->Add(m_pAmountLabel, 0, wxALIGN_CENTER_VERTICAL | wxRIGHT, 4);
    m_pAmount = NumberChoice(amount, "ID_CHOICE3", 1, 59);
    const wxString units[] = {_("Seconds"), _("Mintues"), _("Hours")};
    m_pUnit = new wxChoice(amount, wxID_ANY, wxDefaultPosition, wxDefaultSize, 3, units);
    m_pUnit->SetName("ID_CHOICE_MIN_HOUR");
    a->Add(m_pAmount, 0, wxALIGN_CENTER_VERTICAL | wxRIGHT, 4);
    a->Add(m_pUnit, 0, wxALIGN_CENTER_VERTICAL);
    amount->SetSizer(a);
    m_pAmountPanel = amount;
    top->Add(amount, 0, wxTOP, 5);

    // Special Time: one moment.
    auto* spec = new wxPanel(this);
    auto* s = new wxBoxSizer(wxHORIZONTAL);
    s->Add(new wxStaticText(spec, wxID_ANY, _("At:")), 0, wxALIGN_CENTER_VERTICAL | wxRIGHT, 4);
    m_pSpecDate = new wxDatePickerCtrl(spec, wxID_ANY);
    m_pSpecDate->SetName("ID_DATEPICKERCTRL_SPEC");
    m_pSpecTime = new wxTimePickerCtrl(spec, wxID_ANY);
    m_pSpecTime->SetName("ID_TIMEPICKERCTRL3");
    s->Add(m_pSpecDate, 0, wxALIGN_CENTER_VERTICAL | wxRIGHT, 4);
    s->Add(m_pSpecTime, 0, wxALIGN_CENTER_VERTICAL);
    spec->SetSizer(s);
    m_pSpecPanel = spec;
    top->Add(spec, 0, wxTOP, 5);
}

void TriggerDlg::BuildPeriod(wxBoxSizer* top)
{
    m_pPeriodBox = new wxStaticBoxSizer(wxHORIZONTAL, this, _("Start and End Time Setting"));
    wxWindow* box = m_pPeriodBox->GetStaticBox();
    m_pStartDate = new wxDatePickerCtrl(box, wxID_ANY);
    m_pStartDate->SetName("ID_DATEPICKERCTRL1");
    m_pStartTime = new wxTimePickerCtrl(box, wxID_ANY);
    m_pStartTime->SetName("ID_TIMEPICKERCTRL1");
    m_pEndDate = new wxDatePickerCtrl(box, wxID_ANY);
    m_pEndDate->SetName("ID_DATEPICKERCTRL2");
    m_pEndTime = new wxTimePickerCtrl(box, wxID_ANY);
    m_pEndTime->SetName("ID_TIMEPICKERCTRL2");
    m_pPeriodBox->Add(new wxStaticText(box, wxID_ANY, _("Start Time:")), 0, wxALIGN_CENTER_VERTICAL | wxALL, 4);
    m_pPeriodBox->Add(m_pStartDate, 0, wxALIGN_CENTER_VERTICAL | wxALL, 2);
    m_pPeriodBox->Add(m_pStartTime, 0, wxALIGN_CENTER_VERTICAL | wxALL, 2);
    m_pPeriodBox->AddSpacer(20);
    m_pPeriodBox->Add(new wxStaticText(box, wxID_ANY, _("End Time:")), 0, wxALIGN_CENTER_VERTICAL | wxALL, 4);
    m_pPeriodBox->Add(m_pEndDate, 0, wxALIGN_CENTER_VERTICAL | wxALL, 2);
    m_pPeriodBox->Add(m_pEndTime, 0, wxALIGN_CENTER_VERTICAL | wxALL, 2);
    top->Add(m_pPeriodBox, 0, wxEXPAND | wxALL, 8);
}

std::uint32_t TriggerDlg::SelectedKind() const
{
    for (std::uint32_t k = 0; k < NTriggerTypeCount; ++k)
        if (m_pKind[k]->GetValue())
            return k;
    return TriggerForm().kind;
}

TriggerForm TriggerDlg::GetForm() const
{
    TriggerForm form;
    form.kind = SelectedKind();
    for (int f = 0; f < FieldCount; ++f) {
        form.fields[f].all = m_pAll[f]->GetValue();
        for (unsigned i = 0; i < m_pList[f]->GetCount(); ++i)
            if (m_pList[f]->IsChecked(i))
                form.fields[f].values.push_back(FieldMin(f) + static_cast<int>(i));
    }
    form.days = SelectedNumber(m_pDays);
    form.hours = SelectedNumber(m_pHours);
    form.minutes = SelectedNumber(m_pMinutes);
    form.seconds = SelectedNumber(m_pSeconds);
    form.amount = SelectedNumber(m_pAmount);
    form.unit = m_pUnit->GetSelection();
    form.special = Combine(m_pSpecDate, m_pSpecTime);
    form.start = Combine(m_pStartDate, m_pStartTime);
    form.end = Combine(m_pEndDate, m_pEndTime);
    return form;
}

void TriggerDlg::SetForm(const TriggerForm& form)
{
    m_bLoading = true;
    m_pKind[form.kind < NTriggerTypeCount ? form.kind : NTriggerTypeEveryDay]->SetValue(true);
    for (int f = 0; f < FieldCount; ++f) {
        m_pAll[f]->SetValue(form.fields[f].all);
        for (unsigned i = 0; i < m_pList[f]->GetCount(); ++i)
            m_pList[f]->Check(i, false);
        for (int v : form.fields[f].values)
            if (v >= FieldMin(f) && v <= FieldMax(f))
                m_pList[f]->Check(static_cast<unsigned>(v - FieldMin(f)), true);
    }
    SelectNumber(m_pDays, form.days);
    SelectNumber(m_pHours, form.hours);
    SelectNumber(m_pMinutes, form.minutes);
    SelectNumber(m_pSeconds, form.seconds);
    SelectNumber(m_pAmount, form.amount);
    m_pUnit->SetSelection(form.unit >= 0 && form.unit <= 2 ? form.unit : UnitMinutes);
    Spread(form.special, m_pSpecDate, m_pSpecTime);
    Spread(form.start, m_pStartDate, m_pStartTime);
    Spread(form.end, m_pEndDate, m_pEndTime);
    m_bLoading = false;
    ShowKindControls();
    UpdatePreview();
}

void TriggerDlg::ShowKindControls()
{
    const std::uint32_t kind = SelectedKind();
    bool anyField = false;
    for (int f = 0; f < FieldCount; ++f) {
        const bool used = KindUsesField(kind, f);
        m_pFieldColumn[f]->Show(used);
        m_pList[f]->Enable(!m_pAll[f]->GetValue());
        anyField = anyField || used;
    }
    m_pFieldsPanel->Show(anyField);
    m_pDurationPanel->Show(kind == NTriggerTypeCountDown || kind == NTriggerTypeWithStart);
    m_pAmountPanel->Show(kind == NTriggerTypeInterval || kind == NTriggerTypeIdleTimeout);
    m_pAmountLabel->SetLabel(kind == NTriggerTypeInterval ? _("Every") : _("Idle for"));
    m_pSpecPanel->Show(kind == NTriggerTypeSpecTime);
    // Only the recurring kinds keep to the period.
    m_pPeriodBox->GetStaticBox()->Enable(IsCronDrivenType(kind));
    Layout();
}

void TriggerDlg::UpdatePreview()
{
    const TriggerForm form = GetForm();
    const TriggerTexts texts = BuildTriggerTexts(form, wxDateTime::Now());
    wxString text;
    if (texts.ok)
        text << _("Condition:") << " " << texts.condition << "\n";
    text << FormatPreview(PreviewTrigger(m_context, form.kind, texts, m_context.GetClock().Now()));
    m_pPreview->ChangeValue(text);
    // A form that gives no condition has its reason in the preview already.
    const wxString sentence = texts.ok ? DescribeTrigger(form.kind, texts.condition) : wxString();
    if (m_strDescription != sentence) {
        m_strDescription = sentence;
        m_pDescription->SetLabel(sentence);
        const int width = m_pPreview->GetSize().GetWidth();
        m_pDescription->Wrap(width > 100 ? width : 400);
        Layout();
    }
}

wxString TriggerDlg::DescriptionText() const
{
    return m_strDescription;
}

wxString TriggerDlg::PreviewText() const
{
    return m_pPreview->GetValue();
}

void TriggerDlg::OnAnyChange()
{
    if (m_bLoading)
        return;
    for (int f = 0; f < FieldCount; ++f)
        m_pList[f]->Enable(!m_pAll[f]->GetValue());
    UpdatePreview();
}

void TriggerDlg::OnTest()
{
    const TriggerForm form = GetForm();
    const TriggerTexts texts = BuildTriggerTexts(form, wxDateTime::Now());
    const TriggerPreview preview = PreviewTrigger(m_context, form.kind, texts, m_context.GetClock().Now());
    wxString text;
    if (!preview.moments.empty())
        text << _("The next moments at which this trigger fires:") << "\n\n";
    text << FormatPreview(preview);
    ShowMessage(this, text);
}

void TriggerDlg::OnOk()
{
    const TriggerForm form = GetForm();
    const TriggerTexts texts = BuildTriggerTexts(form, wxDateTime::Now());
    if (!texts.ok) {
        ShowMessage(this, texts.message);
        return;
    }
    const TriggerPreview preview = PreviewTrigger(m_context, form.kind, texts, m_context.GetClock().Now());
    if (preview.neverFires &&
        wxMessageBox(preview.note + "\n\n" + _("Save this trigger anyway?"), "Cadrelle",
                     wxYES_NO | wxNO_DEFAULT | wxICON_WARNING, this) != wxYES)
        return;
    m_result.type = form.kind;
    m_result.condition = texts.condition;
    m_result.start = texts.start;
    m_result.end = texts.end;
    EndModal(wxID_OK);
}

bool EditTriggerParam(wxWindow* parent, const SessionContext& context, TriggerParam& param)
{
    TriggerDlg dlg(parent, context, param);
    if (dlg.ShowModal() != wxID_OK)
        return false;
    const TriggerParam& result = dlg.Result();
    param.type = result.type;
    param.condition = result.condition;
    param.start = result.start;
    param.end = result.end;
    // An edited trigger starts afresh: no firing made up for the old schedule.
    param.nextFire = FormatDateTimeText(wxDateTime());
    param.finished = false;
    param.noticeGiven = false;
    return true;
}

bool ShowTriggerDlgForTrigger(wxWindow* parent, Scheduler& scheduler, std::int64_t tid)
{
    Trigger* trigger = scheduler.GetTriggerById(tid);
    if (!trigger)
        return false;
    TriggerParam param;
    {
        auto lock = scheduler.EditLock();
        trigger->MakeParam(param);
        // The checker skips it meanwhile; the list shows "Editing".
        trigger->SetEditing(true);
        trigger->SetStatus(NTriggerStatusEditing);
    }
    const TriggerParam before = param;
    const bool confirmed = EditTriggerParam(parent, scheduler.Context(), param);
    trigger->SetEditing(false);
    if (!confirmed)
        return false;
    if (param.type == before.type && param.condition == before.condition && param.start == before.start &&
        param.end == before.end)
        return false;
    param.editing = false;
    scheduler.ApplyTriggerEdit(tid, param);
    return true;
}

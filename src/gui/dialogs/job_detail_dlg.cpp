#include "gui/dialogs/job_detail_dlg.h"

#include <algorithm>
#include <memory>

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/dataview.h>
#include <wx/msgdlg.h>
#include <wx/simplebook.h>
#include <wx/sizer.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include "core/datetime_text.h"
#include "core/text_number.h"
#include "core/scheduler.h"
#include "gui/dialogs/job_param_page.h"
#include "gui/dialogs/trigger_dlg.h"
#include "gui/logic/job_form.h"

namespace {

void ShowMessage(wxWindow* parent, const wxString& text)
{
    wxMessageBox(text, "Cadrelle", wxOK | wxCENTRE, parent);
}

wxStaticText* Label(wxWindow* parent, const wxString& text)
{
    return new wxStaticText(parent, wxID_ANY, text);
}

}  // namespace

JobDetailDlg::JobDetailDlg(wxWindow* parent, Scheduler& scheduler, JobDlgMode mode, const JobParam& job,
                           const std::vector<TriggerParam>& triggers, const std::function<void(std::int32_t)>& runNow)
    : wxDialog(parent, wxID_ANY, _("Job"), wxDefaultPosition, wxDefaultSize, wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      m_scheduler(scheduler), m_mode(mode), m_job(job), m_triggers(triggers),
      m_runNow(runNow)
{
    SetName("JobDetailDlg");
    if (mode == JobDlgMode::CopyJob) {
        // The copy's triggers are its own, under unused TIDs, never fired.
        for (TriggerParam& t : m_triggers) {
            t.tid = UnusedTid();
            t.prevFire = FormatDateTimeText(wxDateTime());
            t.nextFire = t.prevFire;
        }
    }
    const wxString titles[] = {_("New Job"), _("Edit Job"), _("Copy Job")};
    SetTitle(wxString::Format("%s - JID %d", titles[static_cast<int>(mode)], m_job.id));

    auto* top = new wxBoxSizer(wxVERTICAL);
    auto* head = new wxFlexGridSizer(2, 6, 8);
    head->AddGrowableCol(1);
    head->Add(Label(this, _("Description")), 0, wxALIGN_CENTER_VERTICAL);
    m_pDescription = new wxTextCtrl(this, wxID_ANY, m_job.description, wxDefaultPosition, wxSize(360, -1));
    m_pDescription->SetName("ID_TEXTCTRL_DESCRIPTION");
    head->Add(m_pDescription, 1, wxEXPAND);
    head->Add(Label(this, _("Job Type")), 0, wxALIGN_CENTER_VERTICAL);
    auto* kindRow = new wxBoxSizer(wxHORIZONTAL);
    m_pKind = new wxChoice(this, wxID_ANY);
    m_pKind->SetName("ID_CHOICE_JOB_TYPE");
    for (std::uint32_t k = 0; k < NJobTypeCount; ++k)
        m_pKind->Append(JobTypeName(k));
    m_pKind->SetSelection(static_cast<int>(std::min<std::uint32_t>(m_job.type, NJobTypeCount - 1)));
    kindRow->Add(m_pKind, 0, wxALIGN_CENTER_VERTICAL);
    m_pEnable = new wxCheckBox(this, wxID_ANY, _("Enable"));
    m_pEnable->SetName("ID_CHECKBOX_ENABLE");
    m_pEnable->SetValue(m_job.enable);
    kindRow->Add(m_pEnable, 0, wxALIGN_CENTER_VERTICAL | wxLEFT, 16);
    head->Add(kindRow, 0);
    top->Add(head, 0, wxEXPAND | wxALL, 8);

    auto* paramBox = new wxStaticBoxSizer(wxVERTICAL, this, _("Parameters"));
    m_pPages = new wxSimplebook(paramBox->GetStaticBox(), wxID_ANY);
    for (std::uint32_t k = 0; k < NJobTypeCount; ++k) {
        auto* page = new JobParamPage(m_pPages, k);
        m_pages.push_back(page);
        m_pPages->AddPage(page, JobTypeName(k));
    }
    m_pages[m_pKind->GetSelection()]->SetValues(m_job.params);
    m_pPages->SetSelection(m_pKind->GetSelection());
    paramBox->Add(m_pPages, 1, wxEXPAND);
    top->Add(paramBox, 0, wxEXPAND | wxLEFT | wxRIGHT, 8);
    m_pKind->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) { m_pPages->SetSelection(m_pKind->GetSelection()); });

    auto* chainBox = new wxStaticBoxSizer(wxHORIZONTAL, this, _("After this job"));
    wxWindow* cb = chainBox->GetStaticBox();
    chainBox->Add(Label(cb, _("Associated JID")), 0, wxALIGN_CENTER_VERTICAL | wxALL, 4);
    m_pAssociated = new wxTextCtrl(cb, wxID_ANY, JoinIdList(m_job.associatedJids), wxDefaultPosition, wxSize(140, -1));
    m_pAssociated->SetName("ID_TEXTCTRL_ASSOCIATED");
    m_pAssociated->SetToolTip(_("JIDs of the jobs to start when this one ends, separated by commas"));
    chainBox->Add(m_pAssociated, 1, wxALIGN_CENTER_VERTICAL | wxALL, 4);
    chainBox->Add(Label(cb, _("Job Interval(ms)")), 0, wxALIGN_CENTER_VERTICAL | wxALL, 4);
    m_pInterval = new wxTextCtrl(cb, wxID_ANY, wxString::Format("%d", m_job.jobInterval), wxDefaultPosition,
                                 wxSize(80, -1));
    m_pInterval->SetName("ID_TEXTCTRL_INTERVAL");
    chainBox->Add(m_pInterval, 0, wxALIGN_CENTER_VERTICAL | wxALL, 4);
    top->Add(chainBox, 0, wxEXPAND | wxLEFT | wxRIGHT | wxTOP, 8);

    BuildTriggerBox(this, top);

    auto* buttons = new wxBoxSizer(wxHORIZONTAL);
    auto* run = new wxButton(this, wxID_ANY, _("Run now"));
    run->SetName("ID_BUTTON_RUN_NOW");
    if (mode == JobDlgMode::EditJob && m_runNow) {
        run->SetToolTip(_("Runs the job as it is saved now (press OK first to run your changes)"));
        run->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { m_runNow(m_job.id); });
    } else {
        run->Enable(false);
        run->SetToolTip(_("Save the job first: a new job can run once it is saved"));
    }
    buttons->Add(run, 0, wxALL, 5);
    buttons->AddStretchSpacer();
    auto* ok = new wxButton(this, wxID_OK, _("&OK"));
    ok->SetName("ID_BUTTON_OK");
    buttons->Add(ok, 0, wxALL, 5);
    auto* cancel = new wxButton(this, wxID_CANCEL, _("&Cancel"));
    cancel->SetName("ID_BUTTON_CANCEL");
    buttons->Add(cancel, 0, wxALL, 5);
    top->Add(buttons, 0, wxEXPAND | wxALL, 5);
    ok->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) {
        if (Apply())
            EndModal(wxID_OK);
    });
    ok->SetDefault();

    SetSizerAndFit(top);
    SetMinSize(GetSize());
    CentreOnParent();
    RefreshTriggers();
}

void JobDetailDlg::BuildTriggerBox(wxWindow* parent, wxSizer* sizer)
{
    auto* box = new wxStaticBoxSizer(wxHORIZONTAL, parent, _("Triggers"));
    wxWindow* sb = box->GetStaticBox();
    m_pTriggerList = new wxDataViewListCtrl(sb, wxID_ANY, wxDefaultPosition, wxSize(540, 130));
    m_pTriggerList->SetName("ID_LISTCTRL_TRIGGERS");
    m_pTriggerList->AppendTextColumn(_("TID"), wxDATAVIEW_CELL_INERT, 50);
    m_pTriggerList->AppendTextColumn(_("Type"), wxDATAVIEW_CELL_INERT, 100);
    m_pTriggerList->AppendTextColumn(_("Condition"), wxDATAVIEW_CELL_INERT, 190);
    m_pTriggerList->AppendTextColumn(_("Next moment"), wxDATAVIEW_CELL_INERT, 150);
    box->Add(m_pTriggerList, 1, wxEXPAND | wxALL, 4);
    auto* column = new wxBoxSizer(wxVERTICAL);
    const std::pair<const char*, wxString> names[] = {{"ID_BUTTON_ADD_TRIGGER", _("&Add...")},
                                                     {"ID_BUTTON_EDIT_TRIGGER", _("&Edit...")},
                                                     {"ID_BUTTON_DELETE_TRIGGER", _("De&lete")}};
    for (int i = 0; i < 3; ++i) {
        auto* button = new wxButton(sb, wxID_ANY, names[i].second);
        button->SetName(names[i].first);
        column->Add(button, 0, wxEXPAND | wxBOTTOM, 4);
        button->Bind(wxEVT_BUTTON, [this, i](wxCommandEvent&) {
            if (i == 0)
                OnAddTrigger();
            else if (i == 1)
                OnEditTrigger();
            else
                OnDeleteTrigger();
        });
    }
    m_pTriggerList->Bind(wxEVT_DATAVIEW_ITEM_ACTIVATED, [this](wxDataViewEvent&) { OnEditTrigger(); });
    box->Add(column, 0, wxALL, 4);
    sizer->Add(box, 1, wxEXPAND | wxLEFT | wxRIGHT | wxTOP, 8);
}

void JobDetailDlg::RefreshTriggers()
{
    m_pTriggerList->DeleteAllItems();
    const wxDateTime now = wxDateTime::Now();
    for (const TriggerParam& t : m_triggers) {
        TriggerTexts texts;
        texts.ok = true;
        texts.condition = t.condition;
        texts.start = t.start;
        texts.end = t.end;
        const TriggerPreview preview = PreviewTrigger(m_scheduler.Context(), t.type, texts, now, 1);
        wxVector<wxVariant> row;
        row.push_back(wxVariant(wxString::Format("%lld", static_cast<long long>(t.tid))));
        row.push_back(wxVariant(wxGetTranslation(TriggerTypeName(t.type))));
        row.push_back(wxVariant(t.condition));
        row.push_back(wxVariant(preview.moments.empty() ? wxString("-")
                                                        : preview.moments[0].Format("%Y-%m-%d %H:%M:%S")));
        m_pTriggerList->AppendItem(row);
    }
}

std::int64_t JobDetailDlg::UnusedTid() const
{
    std::set<std::int64_t> taken = m_deletedTids;
    for (const TriggerParam& t : m_triggers)
        taken.insert(t.tid);
    return m_scheduler.UnusedTid(taken);
}

void JobDetailDlg::AddTriggerParam(const TriggerParam& param)
{
    m_triggers.push_back(param);
    RefreshTriggers();
}

void JobDetailDlg::OnAddTrigger()
{
    TriggerParam param;
    param.tid = UnusedTid();
    param.type = NTriggerTypeEveryDay;
    if (EditTriggerParam(this, m_scheduler.Context(), param))
        AddTriggerParam(param);
}

void JobDetailDlg::OnEditTrigger()
{
    const int row = m_pTriggerList->GetSelectedRow();
    if (row == wxNOT_FOUND) {
        ShowMessage(this, _("Please select a trigger first."));
        return;
    }
    TriggerParam& param = m_triggers[static_cast<std::size_t>(row)];
    if (EditTriggerParam(this, m_scheduler.Context(), param)) {
        m_editedTids.insert(param.tid);
        RefreshTriggers();
    }
}

void JobDetailDlg::OnDeleteTrigger()
{
    const int row = m_pTriggerList->GetSelectedRow();
    if (row == wxNOT_FOUND) {
        ShowMessage(this, _("Please select a trigger first."));
        return;
    }
    const std::int64_t tid = m_triggers[static_cast<std::size_t>(row)].tid;
    if (m_mode == JobDlgMode::EditJob && m_scheduler.GetTriggerOwner(tid) &&
        m_scheduler.GetTriggerOwner(tid)->GetId() == m_job.id)
        m_deletedTids.insert(tid);
    m_editedTids.erase(tid);
    m_triggers.erase(m_triggers.begin() + row);
    RefreshTriggers();
}

bool JobDetailDlg::Collect(JobParam& param, wxString& message) const
{
    param = m_job;
    param.type = static_cast<std::uint32_t>(m_pKind->GetSelection());
    param.description = m_pDescription->GetValue().Strip(wxString::both);
    if (param.description.empty())
        param.description = JobTypeName(param.type);
    param.enable = m_pEnable->GetValue();
    param.params = m_pages[param.type]->GetValues();
    if (!ValidateJobParams(param.type, param.params, message))
        return false;
    const Scheduler& scheduler = m_scheduler;
    if (!ValidateChain(m_pInterval->GetValue(), m_pAssociated->GetValue(), param.id,
                       [&scheduler](std::int32_t jid) { return scheduler.GetJobById(jid) != nullptr; },
                       param.jobInterval, param.associatedJids, message))
        return false;
    param.triggerIds.clear();
    for (const TriggerParam& t : m_triggers)
        param.triggerIds.push_back(t.tid);
    return true;
}

bool JobDetailDlg::Apply()
{
    JobParam param;
    wxString message;
    const auto kind = static_cast<std::uint32_t>(m_pKind->GetSelection());
    if (kind == NJobTypeOpenUrl || kind == NJobTypeRefreshUrl) {
        // An address without its scheme: offered "https://" in front, asked first.
        ParamList values = m_pages[kind]->GetValues();
        const wxString fixed = values.empty() ? wxString() : UrlWithScheme(values[0]);
        if (!fixed.empty()) {
            if (wxMessageBox(wxString::Format(_("The URL \"%s\" has no scheme. Save it as \"%s\"?"), Trimmed(values[0]),
                                              fixed),
                             "Cadrelle", wxYES_NO | wxICON_QUESTION, this) != wxYES)
                return false;
            values[0] = fixed;
            m_pages[kind]->SetValues(values);
        }
    }
    if (!Collect(param, message)) {
        ShowMessage(this, message);
        return false;
    }
    JobEdit edit;
    edit.job = param;
    edit.editedJid = m_mode == JobDlgMode::EditJob ? m_job.id : -1;
    edit.triggers = m_triggers;
    edit.changedTids = m_editedTids;
    m_scheduler.ApplyJobEdit(edit);
    m_job = param;
    return true;
}

bool ShowJobDetailDlg(wxWindow* parent, Scheduler& scheduler, JobDlgMode mode, std::int32_t jid,
                      std::int32_t* resultJid, const std::function<void(std::int32_t)>& runNow)
{
    JobParam param;
    std::vector<TriggerParam> triggers;
    if (mode == JobDlgMode::NewJob) {
        param.id = scheduler.NewJID();
        param.type = NJobTypeReminder;
        param.params = DefaultJobParams(param.type);
    } else {
        std::shared_ptr<Job> job = scheduler.GetJobById(jid);
        if (!job)
            return false;
        auto lock = scheduler.EditLock();
        job->GetParam(param);
        for (std::int64_t tid : job->GetTriggerIds()) {
            if (Trigger* trigger = scheduler.GetTriggerById(tid)) {
                TriggerParam t;
                trigger->MakeParam(t);
                triggers.push_back(t);
            }
        }
    }
    if (mode == JobDlgMode::CopyJob) {
        param.id = scheduler.NewJID();
        // Words are set apart by a space; a description without any (as in
        // Chinese or Japanese) gets the mark joined on, as before.
        param.description << (param.description.Contains(" ") ? " " : "") << _("(Copy)");
    }
    JobDetailDlg dlg(parent, scheduler, mode, param, triggers, runNow);
    if (dlg.ShowModal() != wxID_OK)
        return false;
    if (resultJid)
        *resultJid = dlg.GetJid();
    return true;
}

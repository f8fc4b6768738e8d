#include "gui/frame/agenda_pane.h"

#include <wx/choice.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include "core/clock.h"
#include "core/jobs/job_kinds.h"
#include "core/scheduler.h"
#include "core/session/session_context.h"
#include "core/triggers/trigger_time.h"

namespace {

enum Column { ColDay, ColTime, ColJob, ColTrigger, ColMarks, ColCount };

// One row per run; the day is written on the first run of each day only,
// so the rows read as groups.
class AgendaModel : public wxDataViewVirtualListModel {
public:
    explicit AgendaModel(const Agenda& agenda) : m_agenda(agenda) {}

    unsigned GetColumnCount() const override { return ColCount; }
    wxString GetColumnType(unsigned) const override { return "string"; }

    void GetValueByRow(wxVariant& value, unsigned row, unsigned col) const override
    {
        if (row >= m_agenda.runs.size()) {
            value = wxString();
            return;
        }
        const AgendaRun& run = m_agenda.runs[row];
        const AgendaSource& source = m_agenda.sources[run.source];
        const wxDateTime at = FromMs(run.atMs);
        switch (col) {
        case ColDay: {
            const bool first = row == 0 || FromMs(m_agenda.runs[row - 1].atMs).GetDateOnly() != at.GetDateOnly();
            value = first ? AgendaDayTitle(run.atMs) : wxString();
            break;
        }
        case ColTime:
            value = run.skippedWallSec >= 0 ? wxString::Format("%02d:%02d", run.skippedWallSec / 3600,
                                                               run.skippedWallSec / 60 % 60)
                                            : at.Format("%H:%M:%S");
            break;
        case ColJob:
            value = wxString::Format("%d  %s", source.jid, JobTypeName(source.jobType)) +
                    (source.jobDescription.empty() ? wxString() : ": " + source.jobDescription);
            break;
        case ColTrigger:
            value = wxString::Format("%lld  ", static_cast<long long>(source.tid)) + m_agenda.Sentence(run.source);
            break;
        default:
            value = AgendaMarkText(run.marks);
        }
    }

    bool GetAttrByRow(unsigned row, unsigned, wxDataViewItemAttr& attr) const override
    {
        if (row >= m_agenda.runs.size())
            return false;
        const unsigned marks = m_agenda.runs[row].marks;
        // What ends the session stands out; what the clock change moves reads
        // as an aside.
        if (marks & (AgendaMarkPower | AgendaMarkSession | AgendaMarkPowerClose)) {
            attr.SetBold(true);
            if (marks & AgendaMarkPowerClose)
                attr.SetColour(*wxRED);
        }
        if (marks & (AgendaMarkSkipped | AgendaMarkRepeated))
            attr.SetItalic(true);
        return marks != 0;
    }

    bool SetValueByRow(const wxVariant&, unsigned, unsigned) override { return false; }

private:
    const Agenda& m_agenda;
};

const int kWindowDays[] = {1, 7, 31};

}  // namespace

AgendaPane::AgendaPane(wxWindow* parent, const Scheduler& scheduler, std::function<void(std::int32_t)> openJob)
    : wxPanel(parent, wxID_ANY), m_scheduler(scheduler), m_openJob(std::move(openJob))
{
    SetName("ID_PANEL_AGENDA");
    m_pWindow = new wxChoice(this, wxID_ANY);
    m_pWindow->SetName("ID_CHOICE_AGENDA_WINDOW");
    m_pWindow->Append(_("Next day"));
    m_pWindow->Append(_("Next week"));
    m_pWindow->Append(_("Next month"));
    m_pWindow->SetSelection(0);
    m_pSummary = new wxStaticText(this, wxID_ANY, wxString());
    m_pSummary->SetName("ID_STATIC_AGENDA_SUMMARY");

    m_model = new AgendaModel(m_agenda);
    m_pList = new wxDataViewCtrl(this, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                 wxDV_SINGLE | wxDV_ROW_LINES | wxDV_VERT_RULES);
    m_pList->SetName("ID_LISTCTRL_AGENDA");
    m_pList->AssociateModel(m_model.get());
    const struct {
        const char* title;
        int width;
    } columns[] = {{wxTRANSLATE("Day"), 160}, {wxTRANSLATE("Time"), 70}, {wxTRANSLATE("Job"), 220},
                   {wxTRANSLATE("Trigger"), 240}, {wxTRANSLATE("Marks"), 220}};
    for (unsigned i = 0; i < ColCount; ++i)
        m_pList->AppendTextColumn(wxGetTranslation(columns[i].title), i, wxDATAVIEW_CELL_INERT, columns[i].width,
                                  wxALIGN_LEFT, wxDATAVIEW_COL_RESIZABLE);

    auto* top = new wxBoxSizer(wxHORIZONTAL);
    top->Add(m_pWindow, 0, wxALIGN_CENTER_VERTICAL | wxRIGHT, 8);
    top->Add(m_pSummary, 1, wxALIGN_CENTER_VERTICAL);
    auto* sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(top, 0, wxEXPAND | wxALL, 2);
    sizer->Add(m_pList, 1, wxEXPAND);
    SetSizer(sizer);

    m_pWindow->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) { Rebuild(); });
    m_pList->Bind(wxEVT_DATAVIEW_ITEM_ACTIVATED, [this](wxDataViewEvent& event) {
        const unsigned row = m_model->GetRow(event.GetItem());
        if (row < m_agenda.runs.size())
            m_openJob(m_agenda.sources[m_agenda.runs[row].source].jid);
    });
}

void AgendaPane::Rebuild()
{
    const std::int64_t now = m_scheduler.Context().GetClock().NowMs();
    const int selection = m_pWindow->GetSelection();
    const AgendaOptions window = AgendaWindow(now, kWindowDays[selection < 0 ? 0 : selection]);
    m_agenda = BuildAgenda(m_scheduler, window);
    m_builtAtChange = m_scheduler.Changes().ChangeCount();
    m_builtAtMs = now;
    m_model->Reset(static_cast<unsigned>(m_agenda.runs.size()));
    const std::size_t count = m_agenda.runs.size();
    m_pSummary->SetLabel(m_agenda.truncated
                             ? wxString::Format(_("The list stops after %zu runs."), count)
                             : wxString::Format(wxPLURAL("%zu run", "%zu runs", count), count));
}

void AgendaPane::RefreshIfStale()
{
    const std::int64_t now = m_scheduler.Context().GetClock().NowMs();
    const bool changed = m_scheduler.Changes().ChangeCount() != m_builtAtChange;
    if ((changed && now - m_builtAtMs >= 2000) || now - m_builtAtMs >= 60000 || now < m_builtAtMs)
        Rebuild();
}

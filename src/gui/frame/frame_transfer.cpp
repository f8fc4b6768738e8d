// The frame's import and export commands and the Agenda pane: File > Import
// crontab..., Import jobs..., Export jobs..., View > Agenda. The logic is the
// core's (crontab_import.*, job_transfer.*, agenda.*); here only the windows.

#include <fstream>
#include <iterator>

#include <wx/filedlg.h>
#include <wx/log.h>
#include <wx/utils.h>

#include "core/core_log.h"
#include "core/data/atomic_file.h"
#include "core/import/crontab_import.h"
#include "core/import/job_transfer.h"
#include "core/import/systemd_timer_import.h"
#include "core/scheduler.h"
#include "desktop/session/app_session.h"
#include "gui/dialogs/crontab_import_dlg.h"
#include "gui/dialogs/job_detail_dlg.h"
#include "gui/frame/agenda_pane.h"
#include "gui/frame/frame_shared.h"
#include "gui/main_frame.h"

using namespace frame;

namespace {

bool ReadWholeFile(const wxString& path, std::string& bytes)
{
    std::ifstream stream(path.fn_str(), std::ios::binary);
    if (!stream)
        return false;
    bytes.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    return true;
}

// The user's crontab through `crontab -l`; false with the reason.
bool ReadOwnCrontab(std::string& text, wxString& reason)
{
    wxArrayString output, errors;
    if (wxExecute("crontab -l", output, errors, wxEXEC_SYNC) != 0) {
        reason = wxJoin(errors, ' ', '\0');
        return false;
    }
    for (const wxString& line : output)
        text += line.utf8_string() + "\n";
    return true;
}

}  // namespace

void CadrelleFrame::ShowAgenda(bool show)
{
    wxAuiPaneInfo& pane = m_mgr.GetPane("Agenda");
    pane.Show(show);
    m_mgr.Update();
    if (GetMenuBar())
        GetMenuBar()->Check(ID_MNU_AGENDA, show);
    if (show)
        m_pAgenda->Rebuild();
}

bool CadrelleFrame::IsAgendaShown()
{
    return m_mgr.GetPane("Agenda").IsShown();
}

void CadrelleFrame::OnImportCrontab(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::OnImportCrontab", LogMs());
    std::string text;
    wxString reason;
    wxString source = _("Your crontab");
    const bool own = ReadOwnCrontab(text, reason);
    // The user's systemd timers are offered in the same preview.
    const std::vector<CrontabLine> timers = ReadSystemdTimers(UserSystemdTimerFolder());
    if (!own && timers.empty()) {
        Tell(this, wxString::Format(_("\"crontab -l\" did not give a crontab (%s). Choose a crontab file instead."),
                                    reason));
        wxFileDialog choose(this, _("Choose a crontab file"), wxString(), wxString(), "*", wxFD_OPEN |
                                                                                            wxFD_FILE_MUST_EXIST);
        if (choose.ShowModal() != wxID_OK)
            return;
        source = choose.GetPath();
        if (!ReadWholeFile(source, text)) {
            Tell(this, wxString::Format(_("cannot read %s"), source), wxICON_ERROR);
            return;
        }
    }
    std::vector<CrontabLine> lines = TranslateCrontab(text);
    lines.insert(lines.end(), timers.begin(), timers.end());
    const CrontabImportChoice choice = ShowCrontabImportDlg(this, source, lines, own);
    if (!choice.confirmed)
        return;
    Scheduler& scheduler = m_pSession->GetScheduler();
    for (const JobEdit& edit : CrontabJobEdits(lines, scheduler)) {
        scheduler.ApplyJobEdit(edit);
        wxLogMessage("%d ### Import crontab => [JID_%d]", LogMs(), edit.job.id);
    }
    RefreshViews();
    if (!choice.commentOut)
        return;
    // The crontab as it was is kept before it is replaced.
    const wxString stamp = wxDateTime::Now().Format("%Y%m%d-%H%M%S");
    const wxString copy = m_pSession->AppDir() + "/crontab-before-import-" + stamp + ".txt";
    const wxString next = m_pSession->AppDir() + "/crontab-after-import-" + stamp + ".txt";
    wxString error;
    if (!WriteFileAtomically(copy, text, &error) ||
        !WriteFileAtomically(next, CommentOutImported(text, lines), &error)) {
        Tell(this, wxString::Format(_("Your crontab was left as it is: %s"), error), wxICON_ERROR);
        return;
    }
    wxArrayString output, errors;
    if (wxExecute(wxString::Format("crontab \"%s\"", next), output, errors, wxEXEC_SYNC) != 0)
        Tell(this, wxString::Format(_("Your crontab was left as it is: %s"), wxJoin(errors, ' ', '\0')),
             wxICON_ERROR);
    else
        Tell(this, wxString::Format(_("The imported lines of your crontab are commented out. The crontab as it "
                                      "was is kept in %s."),
                                    copy));
}

void CadrelleFrame::OnExportJobs(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::OnExportJobs", LogMs());
    // The jobs the list shows: all, or those of the chosen category and filter.
    std::vector<std::int32_t> jids;
    for (unsigned i = 0; i < m_jobModel->GetCount(); ++i)
        if (const JobRow* row = m_jobModel->RowAt(i))
            jids.push_back(row->jid);
    if (jids.empty()) {
        Tell(this, _("The job list shows no jobs to export."));
        return;
    }
    wxFileDialog save(this, wxString::Format(wxPLURAL("Export %zu job", "Export %zu jobs", jids.size()), jids.size()),
                      wxString(), "cadrelle-jobs.xml", _("Cadrelle jobs (*.xml)|*.xml"),
                      wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
    if (save.ShowModal() != wxID_OK)
        return;
    wxString problem;
    const std::string text = ExportJobs(m_pSession->GetScheduler(), jids, problem);
    if (problem.empty())
        WriteFileAtomically(save.GetPath(), text, &problem);
    if (!problem.empty())
        Tell(this, wxString::Format(_("cannot write %s: %s"), save.GetPath(), problem), wxICON_ERROR);
}

void CadrelleFrame::OnImportJobs(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::OnImportJobs", LogMs());
    wxFileDialog open(this, _("Import jobs"), wxString(), wxString(), _("Cadrelle jobs (*.xml)|*.xml"),
                      wxFD_OPEN | wxFD_FILE_MUST_EXIST);
    if (open.ShowModal() != wxID_OK)
        return;
    std::string bytes;
    if (!ReadWholeFile(open.GetPath(), bytes)) {
        Tell(this, wxString::Format(_("cannot read %s"), open.GetPath()), wxICON_ERROR);
        return;
    }
    Scheduler& scheduler = m_pSession->GetScheduler();
    const JobImport plan = PlanJobImport(bytes, scheduler);
    if (!plan.problem.empty()) {
        Tell(this, wxString::Format(_("%s cannot be imported: %s"), open.GetPath(), plan.problem), wxICON_ERROR);
        return;
    }
    wxString question = wxString::Format(
        wxPLURAL("Add %zu job from %s under new ids?", "Add %zu jobs from %s under new ids?", plan.edits.size()),
        plan.edits.size(), open.GetPath());
    if (!plan.notes.empty())
        question += "\n\n" + wxJoin(plan.notes, '\n', '\0');
    if (!Ask(this, question))
        return;
    ApplyJobImport(plan, scheduler);
    for (const auto& [from, to] : plan.jidMap)
        wxLogMessage("%d ### Import jobs: JID_%d => [JID_%d]", LogMs(), from, to);
    RefreshViews();
}

void CadrelleFrame::BuildAgendaPane()
{
    m_pAgenda = new AgendaPane(this, m_pSession->GetScheduler(),
                               [this](std::int32_t jid) { OpenJobDialog(JobDlgMode::EditJob, jid, "Edit Job"); });
    m_mgr.AddPane(m_pAgenda, wxAuiPaneInfo().Name("Agenda").Caption(_("Agenda")).Bottom().Position(1).BestSize(520, 200)
                                 .MinSize(-1, 120).Hide());
}

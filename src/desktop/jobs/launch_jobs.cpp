#include "desktop/jobs/launch_jobs.h"

#include <wx/log.h>

#include "core/core_log.h"
#include "core/history/run_report.h"
#include "core/jobs/job.h"
#include "core/jobs/job_actions.h"
#include "core/settings_lookup.h"
#include "core/translate.h"
#include "core/user_messages.h"
#include "desktop/jobs/backup_job.h"
#include "desktop/platform/launcher.h"
#include "core/session/session_context.h"

namespace {

bool IsMinimizeOn(const SessionContext& context)
{
    return context.Settings().GetSetting("minimizeOnOpenJob").IsSameAs("1", false);
}

// "http:", "mailto:", "file:": letters first, then letters, digits, + - .,
// then a colon. A Windows drive ("C:") is not a scheme.
bool HasScheme(const wxString& text)
{
    const int colon = text.Find(':');
    if (colon < 2)
        return false;
    for (int i = 0; i < colon; ++i) {
        const wxUniChar c = text[i];
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        const bool other = (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
        if (!letter && !(i > 0 && other))
            return false;
    }
    return true;
}

// The log says what happened; a session that lacks the means (no display, no
// terminal, no application for the type) is also told to the user, who
// otherwise would see nothing happen.
void Report(const Job& job, SessionContext& context, const LaunchOutcome& outcome, const wxString& target, const wxString& failureLine)
{
    const int jid = job.GetId();
    if (outcome.ok)
        ReportRunDetails(wxString::Format("%s (%s)", target, outcome.started));
    else
        ReportRunFailed(outcome.reason);
    if (outcome.ok) {
        wxLogMessage("%d --- [JID_%d] Started %s for \"%s\"", LogMs(), jid, outcome.started, target);
        if (!outcome.note.empty())
            wxLogMessage("%d --- [JID_%d] %s", LogMs(), jid, outcome.note);
        return;
    }
    wxLogMessage("%d --- [JID_%d] %s %s", LogMs(), jid, failureLine, outcome.reason);
    if (outcome.sessionLacks) {
        const wxString text = wxString::Format(TranslateFromAnyThread("%s could not run:\n%s"), job.GetTypeName(),
                                               outcome.reason);
        context.Messages().ShowJobFailure(
            static_cast<std::uint32_t>(jid),
            JobFailureText(text, jid, job.GetDescription(), context.GetClock().Now()));
    }
}

// GIO has no way to ask an application to start iconified.
void NoteNotMinimized(const Job& job, SessionContext& context, const LaunchOutcome& outcome)
{
    if (outcome.ok && IsMinimizeOn(context))
        wxLogMessage("%d --- [JID_%d] %s cannot be asked to start minimised", LogMs(), job.GetId(), outcome.started);
}

bool RefuseEmpty(const Job& job, SessionContext& /*context*/, const wxString& target, const char* what)
{
    if (!target.empty())
        return false;
    wxLogMessage("%d --- [JID_%d] Nothing to do: %s is empty", LogMs(), job.GetId(), what);
    ReportRunFailed(_("Nothing to do: a required parameter is empty"));
    return true;
}

void OpenUrl(const Job& job, SessionContext& context)
{
    wxString url = job.GetParamAt(0);
    url.Trim(true).Trim(false);
    if (RefuseEmpty(job, context, url, "the URL"))
        return;
    // Windows opens "www.example.com" in the browser; so do we. An absolute
    // path is a file, as a "file:" URL is.
    LaunchOutcome outcome;
    if (HasScheme(url))
        outcome = OpenUriWithDefault(url);
    else if (url.StartsWith("/"))
        outcome = OpenPathWithDefault(url);
    else
        outcome = OpenUriWithDefault("http://" + url);
    Report(job, context, outcome, url, wxString::Format("Failed to open URL \"%s\" in default browser.", url));
    NoteNotMinimized(job, context, outcome);
}

// Open File and Open Folder alike: the default application for the type, so a
// folder given to Open File opens in the file manager as well.
void OpenPath(const Job& job, SessionContext& context)
{
    const wxString path = job.GetParamAt(0);
    if (RefuseEmpty(job, context, path, "the path"))
        return;
    const LaunchOutcome outcome =
        path.StartsWith("file:") ? OpenUriWithDefault(path) : OpenPathWithDefault(path);
    Report(job, context, outcome, path, wxString::Format("Cannot open \"%s\":", path));
    NoteNotMinimized(job, context, outcome);
}

void ExecCommand(const Job& job, SessionContext& context)
{
    const wxString command = job.GetParamAt(0);
    const LaunchOutcome outcome = RunCommandInTerminal(command, IsMinimizeOn(context));
    Report(job, context, outcome, command, wxString::Format("Cannot run \"%s\" in a terminal:", command));
}

// Scripts have no window of their own; "minimizeOnOpenJob" does not apply.
void ExecScript(const Job& job, SessionContext& context)
{
    const wxString path = job.GetParamAt(0);
    if (RefuseEmpty(job, context, path, "the script file"))
        return;
    const LaunchOutcome outcome = RunScriptFile(path);
    Report(job, context, outcome, path, wxString::Format("Cannot run the script \"%s\":", path));
}

}  // namespace

void RegisterLaunchJobActions(JobActions& actions)
{
    actions.Set(NJobTypeOpenUrl, OpenUrl);
    actions.Set(NJobTypeOpenFile, OpenPath);
    actions.Set(NJobTypeOpenFolder, OpenPath);
    actions.Set(NJobTypeExecDosCommand, ExecCommand);
    actions.Set(NJobTypeExecScriptFile, ExecScript);
    actions.Set(NJobTypeBackupFolder, RunBackupJob);
}

#include "desktop/jobs/window_input_jobs.h"

#include <climits>

#include <wx/log.h>

#include "core/core_log.h"
#include "core/jobs/job.h"
#include "core/jobs/job_actions.h"
#include "core/translate.h"
#include "core/user_messages.h"
#include "desktop/jobs/close_app_job.h"
#include "desktop/jobs/input_jobs.h"
#include "desktop/jobs/screenshot_job.h"
#include "desktop/platform/display_session.h"
#include "core/session/session_context.h"

void RegisterWindowAndInputJobActions(JobActions& actions)
{
    actions.Set(NJobTypeAutoScreenshot, RunScreenshotJob);
    actions.Set(NJobTypeCloseApp, RunCloseAppJob);
    actions.Set(NJobTypeSendKey, RunSendKeyJob);
    actions.Set(NJobTypeKeyTyping, RunKeyTypingJob);
    actions.Set(NJobTypeMouseClick, RunMouseClickJob);
}

std::optional<long> ParseWholeNumber(const wxString& text)
{
    const wxString trimmed = wxString(text).Trim(true).Trim(false);
    if (trimmed.empty())
        return std::nullopt;
    std::size_t start = (trimmed[0] == '-' || trimmed[0] == '+') ? 1 : 0;
    if (start == trimmed.length() || trimmed.length() - start > 9)  // beyond 9 digits is no screen size
        return std::nullopt;
    for (std::size_t i = start; i < trimmed.length(); ++i) {
        if (trimmed[i] < '0' || trimmed[i] > '9')
            return std::nullopt;
    }
    long value = 0;
    if (!trimmed.ToLong(&value))
        return std::nullopt;
    return value;
}

std::optional<long> ParseScalePercent(const wxString& text)
{
    if (wxString(text).Trim(true).Trim(false).empty())
        return 100;
    const std::optional<long> scale = ParseWholeNumber(text);
    if (!scale || *scale <= 0)
        return std::nullopt;
    return scale;
}

long ApplyScale(long value, long scale)
{
    return static_cast<long>(static_cast<long long>(value) * scale / 100);
}

bool RequireDisplaySession(const Job& job, SessionContext& context)
{
    const wxString problem = DisplaySessionProblem();
    if (problem.empty())
        return true;
    wxLogMessage("%d --- [JID_%d] %s cannot run: %s", LogMs(), job.GetId(), JobTypeEnglishName(job.GetType()),
                 problem);
    context.Messages().ShowMessage(
        wxString::Format(TranslateFromAnyThread("%s cannot run here.\n%s"), job.GetTypeName(), problem), "Cadrelle");
    return false;
}

void ReportJobProblem(const Job& job, SessionContext& context, const wxString& text)
{
    wxLogMessage("%d --- [JID_%d] %s", LogMs(), job.GetId(), text);
    context.Messages().ShowMessage(text, "Cadrelle");
}

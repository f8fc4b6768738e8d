#include "desktop/jobs/close_app_job.h"

#include <wx/log.h>
#include <wx/tokenzr.h>

#include "core/core_log.h"
#include "core/jobs/job.h"
#include "core/translate.h"
#include "core/user_messages.h"
#include "desktop/jobs/window_input_jobs.h"
#include "desktop/platform/window_closer.h"
#include "core/session/session_context.h"

namespace {

// The toolkit's default message-box caption, which these boxes keep.
const char* const kDefaultCaption = "Message";

}  // namespace

std::vector<wxString> SplitTitleList(const wxString& list)
{
    std::vector<wxString> titles;
    wxStringTokenizer pieces(list, "\"", wxTOKEN_RET_EMPTY_ALL);
    while (pieces.HasMoreTokens()) {
        wxString piece = pieces.GetNextToken();
        piece.Trim(true).Trim(false);
        if (!piece.empty())
            titles.push_back(piece);
    }
    return titles;
}

void RunCloseAppJob(const Job& job, SessionContext& context)
{
    const wxString list = job.GetParamAt(0);
    if (!list.Contains("\"")) {
        context.Messages().ShowMessage(TranslateFromAnyThread("CloseAppJob::Execute() app title list format error"),
                                      kDefaultCaption);
        return;
    }
    if (!RequireDisplaySession(job, context))
        return;
    for (const wxString& title : SplitTitleList(list)) {
        const CloseRequestOutcome outcome = RequestWindowClose(title);
        switch (outcome.result) {
        case CloseRequestResult::Sent:
            wxLogMessage("%d --- [JID_%d] Asked \"%s\" to close: %s", LogMs(), job.GetId(), title, outcome.detail);
            break;
        case CloseRequestResult::NotFound:
            wxLogMessage("%d --- [JID_%d] No window titled \"%s\"", LogMs(), job.GetId(), title);
            context.Messages().ShowMessage(TranslateFromAnyThread("Window title:\n") + title +
                                              TranslateFromAnyThread("\nnot exist."),
                                          kDefaultCaption);
            break;
        case CloseRequestResult::Unavailable:
            ReportJobProblem(job, context, wxString::Format(TranslateFromAnyThread("Could not ask \"%s\" to close: %s"),
                                                   title, outcome.detail));
            break;
        }
    }
}

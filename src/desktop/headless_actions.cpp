#include "desktop/headless_actions.h"

#include <wx/log.h>

#include "core/core_log.h"
#include "core/jobs/job.h"
#include "core/jobs/job_actions.h"

namespace {

void NeedsDesktop(Job& job)
{
    wxLogMessage("%d --- [JID_%d] %s needs a desktop session; it cannot run in headless mode", LogMs(), job.GetId(),
                 job.GetTypeName());
}

}  // namespace

void RegisterHeadlessJobActions()
{
    const std::uint32_t desktopKinds[] = {
        NJobTypeOpenUrl,       NJobTypeOpenFile,   NJobTypeOpenFolder,
        NJobTypeExecDosCommand, NJobTypeAutoScreenshot, NJobTypeCloseApp, NJobTypeSendKey,
        NJobTypeKeyTyping,  NJobTypeMouseClick,    NJobTypeLockWorkstation, NJobTypeShutoffDisplay,
    };
    for (std::uint32_t kind : desktopKinds)
        SetJobAction(kind, NeedsDesktop);
}

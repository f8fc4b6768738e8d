#include "desktop/jobs/backup_job.h"

#include <wx/log.h>

#include "core/core_log.h"
#include "core/jobs/job.h"
#include "core/user_messages.h"
#include "desktop/jobs/folder_backup.h"
#include "core/session/session_context.h"

namespace {

std::filesystem::path ToPath(const wxString& text)
{
    return std::filesystem::u8path(text.utf8_string());
}

wxString FromPath(const std::filesystem::path& path)
{
    return wxString::FromUTF8(path.u8string());
}

}  // namespace

void RunBackupJob(const Job& job, SessionContext& context)
{
    const int jid = job.GetId();
    const wxString source = job.GetParamAt(0);
    const wxString destination = job.GetParamAt(1);
    wxLogMessage("%d --- [JID_%d] Backup \"%s\" -> \"%s\"", LogMs(), jid, source, destination);

    BackupCallbacks callbacks;
    callbacks.copied = [jid](const std::filesystem::path& file) {
        wxLogMessage("%d --- [JID_%d] Copied %s", LogMs(), jid, FromPath(file));
    };
    callbacks.failed = [jid](const std::filesystem::path& file, const std::string& reason) {
        wxLogMessage("%d --- [JID_%d] Not copied %s: %s", LogMs(), jid, FromPath(file), wxString::FromUTF8(reason));
    };
    const BackupResult result = BackupFolderTree(ToPath(source), ToPath(destination), callbacks);

    wxString text = job.GetSummary();
    if (result.Succeeded()) {
        wxLogMessage("%d --- [JID_%d] Backup done: %zu copied, %zu unchanged", LogMs(), jid, result.copied.size(),
                     result.unchanged);
        text += "\nBackupJob execute sucessed.";
    } else if (!result.refusal.empty()) {
        wxLogMessage("%d --- [JID_%d] Backup refused: %s", LogMs(), jid, wxString::FromUTF8(result.refusal));
        text += "\nBackupJob execute failed.\n" + wxString::FromUTF8(result.refusal);
    } else {
        wxLogMessage("%d --- [JID_%d] Backup failed: %zu not copied, %zu copied, %zu unchanged", LogMs(), jid,
                     result.failed, result.copied.size(), result.unchanged);
        text += "\nBackupJob execute failed.\n" +
                wxString::Format("%s: %s\n%zu item(s) not copied", FromPath(result.firstFailure),
                                 wxString::FromUTF8(result.firstFailureReason), result.failed);
    }
    context.Messages().ShowNotice(static_cast<std::uint32_t>(jid), text);
}

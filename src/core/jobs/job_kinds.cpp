#include "core/jobs/job_kinds.h"

#include "core/jobs/job_actions.h"
#include "core/user_messages.h"

void ReminderJob::Execute() { RunJobAction(*this); }
void OpenJob::Execute() { RunJobAction(*this); }
void BackupJob::Execute() { RunJobAction(*this); }
void ScreenShotJob::Execute() { RunJobAction(*this); }
void RefreshUrlJob::Execute() { RunJobAction(*this); }
void CloseAppJob::Execute() { RunJobAction(*this); }
void SendUdpJob::Execute() { RunJobAction(*this); }
void SendTcpJob::Execute() { RunJobAction(*this); }
void WakeOnLanJob::Execute() { RunJobAction(*this); }
void KeyMouseSimulatorJob::Execute() { RunJobAction(*this); }
void SystemJob::Execute() { RunJobAction(*this); }

void BlankJob::Execute()
{
    GetUserMessages().ShowMessage(_("blank job executed."), "Cadrelle");
}

namespace {

std::unique_ptr<Job> MakeKind(std::uint32_t type)
{
    switch (type) {
    case NJobTypeReminder: return std::make_unique<ReminderJob>(type);
    case NJobTypeOpenUrl:
    case NJobTypeOpenFile:
    case NJobTypeOpenFolder:
    case NJobTypeExecDosCommand:
    case NJobTypeExecScriptFile: return std::make_unique<OpenJob>(type);
    case NJobTypeBackupFolder: return std::make_unique<BackupJob>(type);
    case NJobTypeAutoScreenshot: return std::make_unique<ScreenShotJob>(type);
    case NJobTypeRefreshUrl: return std::make_unique<RefreshUrlJob>(type);
    case NJobTypeCloseApp: return std::make_unique<CloseAppJob>(type);
    case NJobTypeSendUdpMsg: return std::make_unique<SendUdpJob>(type);
    case NJobTypeSendTcpMsg: return std::make_unique<SendTcpJob>(type);
    case NJobTypeWakeOnLan: return std::make_unique<WakeOnLanJob>(type);
    case NJobTypeSendKey:
    case NJobTypeKeyTyping:
    case NJobTypeMouseClick: return std::make_unique<KeyMouseSimulatorJob>(type);
    default:
        if (type >= NJobTypeLockWorkstation && type <= NJobTypeLogoff)
            return std::make_unique<SystemJob>(type);
        return nullptr;
    }
}

}  // namespace

std::unique_ptr<Job> CreateJob(std::uint32_t type)
{
    std::unique_ptr<Job> job = MakeKind(type);
    if (job && (type == NJobTypeCloseApp || type >= NJobTypeLockWorkstation))
        job->SetWarnBeforeRun(true);
    return job;
}

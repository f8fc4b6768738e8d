#include "desktop/control/instance_control.h"

#include "core/engine/scheduler_engine.h"
#include "core/history/history_command.h"
#include "core/history/run_history.h"
#include "core/scheduler.h"

ControlAnswer ServeControlRequest(InstanceControl& control, const ControlRequest& request)
{
    ControlAnswer answer;
    switch (request.kind) {
    case ControlRequest::Kind::Status:
        answer.out = FormatStatus(control.Status());
        break;
    case ControlRequest::Kind::Pause:
    case ControlRequest::Kind::Resume:
        if (!control.SetPaused(request.kind == ControlRequest::Kind::Pause)) {
            answer.exitCode = kControlExitFailed;
            answer.err = std::string(
                _("The triggers are not checked yet (the first check comes 2 seconds after start); try again.\n")
                    .utf8_str());
        } else {
            // One line a script can check; the words are the state's names in --status.
            answer.out = request.kind == ControlRequest::Kind::Pause ? "paused\n" : "running\n";
        }
        break;
    case ControlRequest::Kind::Silent:
        control.SetSilent(request.on);
        break;
    case ControlRequest::Kind::Run:
        if (!control.Run(request.jid)) {
            answer.exitCode = kControlExitUnknownJob;
            answer.err = UnknownJobText(request.jid) + "\n";
        } else {
            answer.out = "started JID " + std::to_string(request.jid) + "\n";
        }
        break;
    case ControlRequest::Kind::Show:
        if (!control.Show()) {
            answer.exitCode = kControlExitFailed;
            answer.err = std::string(_("The running Cadrelle instance has no window (it runs headless).\n").utf8_str());
        }
        break;
    }
    return answer;
}

InstanceStatus CollectStatus(const Scheduler& scheduler, const SchedulerEngine& engine, RunHistory* history)
{
    InstanceStatus status;
    if (history)
        status.lastFailure = LastFailureText(history->LastFailure());
    status.paused = engine.IsPaused();
    status.silent = engine.IsSilentMode();
    const auto lock = scheduler.ReadLock();
    status.jobs = scheduler.Jobs().size();
    status.triggers = scheduler.Triggers().size();
    // The earliest coming firing of an enabled trigger of an enabled job.
    for (const auto& trigger : scheduler.Triggers()) {
        if (!trigger->IsEnabled() || trigger->IsFinished())
            continue;
        const auto& owner = scheduler.GetTriggerOwner(trigger->GetTid());
        const wxDateTime next = trigger->GetNextFire();
        if (!owner || !owner->IsEnabled() || !next.IsValid() || next.GetYear() <= 1999)
            continue;
        const std::int64_t seconds = next.GetTicks();
        if (!status.hasNext || seconds < status.nextSeconds) {
            status.hasNext = true;
            status.nextSeconds = seconds;
            status.nextJid = owner->GetId();
        }
    }
    return status;
}

namespace {

class EngineControl final : public InstanceControl {
public:
    EngineControl(Scheduler& scheduler, SchedulerEngine& engine, RunHistory* history)
        : m_scheduler(scheduler), m_engine(engine), m_history(history)
    {
    }

    InstanceStatus Status() override { return CollectStatus(m_scheduler, m_engine, m_history); }
    bool SetPaused(bool paused) override
    {
        if (!m_engine.IsStarted())
            return false;
        if (m_engine.IsPaused() != paused)
            m_engine.TogglePause();
        return true;
    }
    void SetSilent(bool silent) override { m_engine.SetSilentMode(silent); }
    bool Run(std::int32_t jid) override
    {
        Scheduler::JobPtr job;
        {
            const auto lock = m_scheduler.ReadLock();
            job = m_scheduler.GetJobById(jid);
        }
        // At once, enabled or not, as the window's Execute command runs it.
        RunCause cause;
        cause.origin = RunOrigin::CommandLine;
        return job && m_engine.RunJob(job, cause);
    }
    bool Show() override { return false; }

private:
    Scheduler& m_scheduler;
    SchedulerEngine& m_engine;
    RunHistory* m_history;
};

}  // namespace

std::unique_ptr<InstanceControl> MakeEngineControl(Scheduler& scheduler, SchedulerEngine& engine,
                                                   RunHistory* history)
{
    return std::make_unique<EngineControl>(scheduler, engine, history);
}

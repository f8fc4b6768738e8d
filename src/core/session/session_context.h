#pragma once
// The services one run of the scheduler reaches: the clock, the settings,
// the user messages, the idle-time source, the run recorder, the moment the run started and
// the job kinds' actions. Owned by the session (the window's or the headless
// run's) and handed to what needs it (the triggers, the checker, the job
// threads, the loader), so that two schedulers with two clocks can live in
// one process, as the engine tests do.
//
// The clock is fixed at construction. The other services are installed by
// the session before its threads start; until then (and after Detach) the
// context answers with built-in defaults of its own: the settings' defaults,
// messages written to the log, an idle time of 0. Installed services are
// not owned.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include <wx/datetime.h>

#include "core/clock.h"
#include "core/history/run_recorder.h"
#include "core/idle_time.h"
#include "core/jobs/job_actions.h"
#include "core/settings_lookup.h"
#include "core/user_messages.h"

class SessionContext {
public:
    // A context on the system clock.
    SessionContext();
    // A context on `clock` (not owned; must outlive the context).
    explicit SessionContext(Clock& clock);
    SessionContext(const SessionContext&) = delete;
    SessionContext& operator=(const SessionContext&) = delete;

    Clock& GetClock() const { return m_clock; }
    const SettingsLookup& Settings() const { return *m_settings.load(std::memory_order_acquire); }
    UserMessages& Messages() const { return *m_messages.load(std::memory_order_acquire); }
    IdleTimeSource& IdleTime() const { return *m_idle.load(std::memory_order_acquire); }
    // Where finished runs and not-run decisions go (the run history).
    RunRecorder& Recorder() const { return *m_recorder.load(std::memory_order_acquire); }
    JobActions& Actions() { return m_actions; }
    const JobActions& Actions() const { return m_actions; }

    // nullptr puts the built-in default back.
    void SetSettings(const SettingsLookup* settings);
    void SetMessages(UserMessages* messages);
    void SetIdleTimeSource(IdleTimeSource* source);
    void SetRecorder(RunRecorder* recorder);
    // Puts every installed service back to the defaults: called when the
    // session ends, since a job thread left running may still hold the
    // context after the services it pointed to are gone.
    void Detach();

    // When this run started: With Start triggers count from it. Until set,
    // the moment of the first call.
    wxDateTime StartTime() const;
    void SetStartTime(const wxDateTime& moment);

    // True when the setting execMissFiredTrigger is exactly "1".
    bool IsMissFiredRefireOn() const;

private:
    Clock& m_clock;
    DefaultSettings m_defaultSettings;
    LogUserMessages m_logMessages;
    NoIdleTime m_noIdleTime;
    NoRunRecorder m_noRecorder;
    std::atomic<const SettingsLookup*> m_settings{&m_defaultSettings};
    std::atomic<UserMessages*> m_messages{&m_logMessages};
    std::atomic<IdleTimeSource*> m_idle{&m_noIdleTime};
    std::atomic<RunRecorder*> m_recorder{&m_noRecorder};
    JobActions m_actions;
    mutable std::mutex m_startMutex;
    mutable wxDateTime m_start;
};

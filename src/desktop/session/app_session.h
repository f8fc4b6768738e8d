#pragma once
// One run of the scheduler, with or without a window: the session context
// (clock, settings, messages, idle time, start time, job actions), the
// weekday log, the preferences, the data file, the job kinds and the engine,
// brought up and taken down in one fixed order. The main window and
// `--headless` both own one and drive it with Tick(); main thread only.
//
// Start(): folder, log (start banner), preferences, data file, run history,
// job kinds, engine. Stop(): checker threads stopped and waited for, the run
// history written and closed, web requests
// cancelled, data saved forcibly, preferences saved, the caller's own
// release step, end banner.

#include <cstdint>
#include <functional>
#include <memory>

#include <wx/string.h>

#include "core/data/scheduler_data.h"
#include "core/engine/scheduler_engine.h"
#include "core/scheduler.h"
#include "core/session/session_context.h"

class DesktopJobs;
class RunHistory;
class Preference;
class WeekdayLog;

class AppSession {
public:
    // The checkers start 2 s after start (the first tick of what the window
    // has always called its trigger timer); housekeeping comes every second.
    static constexpr int kTriggerTimerMs = 2000;
    static constexpr int kHousekeepingMs = 1000;
    // How often the owner should call Tick().
    static constexpr int kTickMs = 100;
    // How often housekeeping prunes the run history.
    static constexpr int kHistoryPruneMs = 60000;

    explicit AppSession(const wxString& appDir);
    // Stops the session if the owner did not.
    ~AppSession();
    AppSession(const AppSession&) = delete;
    AppSession& operator=(const AppSession&) = delete;

    // Brings the session up; `host` receives the engine's calls, `messages`
    // (not owned; null: the log) tells the user. Problems (a folder that
    // cannot be written, a log that cannot be opened) are written to
    // standard error and the run goes on.
    void Start(EngineHost& host, UserMessages* messages = nullptr);

    // What a tick did, so the window can follow.
    struct TickResult {
        bool checkingStarted = false;
        bool housekeepingRan = false;
    };
    // Every kTickMs or so: starts the checkers when their time has come,
    // runs the housekeeping (delayed save, log lines) and the logging check
    // when due.
    TickResult Tick();

    // The orderly end; `release` runs after the preferences are saved and
    // before the end banner (hot keys, timers of the owner). Once only.
    void Stop(const std::function<void()>& release = {});
    // The same end when the display is lost or the end comes inside a
    // dialog's loop: nothing that touches a window runs.
    void EmergencyStop();
    bool IsRunning() const { return m_bStarted && !m_bStopped; }

    const wxString& AppDir() const { return m_appDir; }
    SessionContext& Context() { return *m_context; }
    // The user's preferences, loaded when the session is made.
    Preference& Prefs() { return *m_pPrefs; }
    Scheduler& GetScheduler() { return *m_pScheduler; }
    SchedulerEngine& GetEngine() { return *m_pEngine; }
    // The run history (history.db in the application folder).
    RunHistory& History() { return *m_pHistory; }
    const DataLoadReport& LoadReport() const { return m_loadReport; }
    // False when the final save could not write the data file (already told).
    bool FinalSaveSucceeded() const { return m_bFinalSaveOk; }

private:
    void StopInOrder(const wxString& firstLine, const std::function<void()>& release);

    wxString m_appDir;
    std::shared_ptr<SessionContext> m_context;
    std::unique_ptr<Preference> m_pPrefs;
    std::unique_ptr<IdleTimeSource> m_pIdleTime;
    std::unique_ptr<WeekdayLog> m_pLog;
    std::unique_ptr<Scheduler> m_pScheduler;
    std::unique_ptr<DesktopJobs> m_pJobs;
    std::unique_ptr<RunHistory> m_pHistory;
    std::unique_ptr<SchedulerEngine> m_pEngine;
    DataLoadReport m_loadReport;
    std::int64_t m_startedMs = 0;
    std::int64_t m_lastHousekeepingMs = 0;
    std::int64_t m_lastLoggingMs = 0;
    std::int64_t m_lastPruneMs = 0;
    bool m_bStarted = false;
    bool m_bStopped = false;
    bool m_bFinalSaveOk = true;
};

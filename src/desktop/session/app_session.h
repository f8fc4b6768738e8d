#pragma once
// One run of the scheduler, with or without a window: preferences, the
// weekday log, the data file, the job kinds and the engine, brought up and
// taken down in one fixed order. The main window and `--headless` both own
// one; main thread only.
//
// Start(): folder, log (start banner), preferences, data file, job kinds,
// engine. Stop(): "->> ~CadrelleFrame", checker threads stopped and waited
// for, web requests cancelled, data saved forcibly, preferences saved, the
// caller's own release step, "<<- ~CadrelleFrame", end banner.

#include <functional>
#include <memory>

#include <wx/string.h>

#include "core/engine/scheduler_engine.h"
#include "core/scheduler.h"

class WeekdayLog;

class AppSession {
public:
    // The owner's timers, the same with or without a window: the checkers
    // start on the first tick of the trigger timer, 2 s after start; the
    // housekeeping tick comes every second.
    static constexpr int kTriggerTimerMs = 2000;
    static constexpr int kHousekeepingMs = 1000;

    explicit AppSession(const wxString& appDir);
    // Stops the session if the owner did not.
    ~AppSession();
    AppSession(const AppSession&) = delete;
    AppSession& operator=(const AppSession&) = delete;

    // Brings the session up; `host` receives the engine's calls. Problems
    // (a folder that cannot be written, a log that cannot be opened) are
    // written to standard error and the run goes on.
    void Start(EngineHost& host);
    // The orderly end; `release` runs after the preferences are saved and
    // before the end banner (hot keys, timers of the owner). Once only.
    void Stop(const std::function<void()>& release = {});
    // When the display is lost or the end comes inside a dialog's loop:
    // stops the checkers, saves data and preferences and writes the end
    // banner, without touching any window.
    void EmergencyStop();
    bool IsRunning() const { return m_bStarted && !m_bStopped; }

    const wxString& AppDir() const { return m_appDir; }
    Scheduler& GetScheduler() { return *m_pScheduler; }
    SchedulerEngine& GetEngine() { return *m_pEngine; }
    const DataLoadReport& LoadReport() const { return m_loadReport; }
    // False when the final save could not write the data file (already told).
    bool FinalSaveSucceeded() const { return m_bFinalSaveOk; }

    // Every second or so: the delayed save, and the log's queued lines.
    void HousekeepingTick();
    // Every WeekdayLog::kTimerPeriodMs: the log file of the day.
    void LoggingTick();

private:
    void SaveAll();

    wxString m_appDir;
    std::unique_ptr<WeekdayLog> m_pLog;
    std::unique_ptr<Scheduler> m_pScheduler;
    std::unique_ptr<SchedulerEngine> m_pEngine;
    DataLoadReport m_loadReport;
    bool m_bStarted = false;
    bool m_bStopped = false;
    bool m_bFinalSaveOk = true;
};

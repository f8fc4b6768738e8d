#include "app/headless_runner.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <iostream>
#include <mutex>

#include <wx/log.h>

#include "core/app_start_time.h"
#include "core/clock.h"
#include "core/core_log.h"
#include "core/data/atomic_file.h"
#include "core/engine/scheduler_engine.h"
#include "core/log/weekday_log.h"
#include "core/prefs/preference.h"
#include "core/settings_lookup.h"
#include "core/scheduler.h"
#include "desktop/single_instance.h"
#include "desktop/desktop_actions.h"
#include "desktop/jobs/web_refresh.h"

namespace {

std::atomic<int> g_stopSignal{0};

extern "C" void OnStopSignal(int signal)
{
    g_stopSignal.store(signal);
}

// The main thread's loop: sleeps until a worker asks for it or a period
// passes.
class HeadlessHost final : public EngineHost {
public:
    void WakeMainThread() override
    {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_bWoken = true;
        }
        m_wake.notify_one();
    }
    void AdvanceNotice(const Job& job) override
    {
        wxLogMessage("%d ### [JID_%d] %s will run within %d seconds", LogMs(), job.GetId(), job.GetTypeName(),
                     SchedulerEngine::kNoticeSeconds);
    }

    void WaitForWork(std::chrono::milliseconds period)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_wake.wait_for(lock, period, [this] { return m_bWoken; });
        m_bWoken = false;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_bWoken = false;
};

}  // namespace

int RunHeadless(const wxString& appDir)
{
    const SingleInstanceGuard instance;
    if (instance.IsAnotherRunning()) {
        std::cerr << SingleInstanceGuard::RefusalMessage() << std::endl;
        return 1;
    }
    std::signal(SIGINT, OnStopSignal);
    std::signal(SIGTERM, OnStopSignal);

    SetAppStartTime(GetClock().Now());
    // The log first, so that loading the data file is logged too. Without a
    // file (a folder that cannot be written) the run goes on unlogged.
    wxString dirError;
    if (!EnsurePrivateDir(appDir, &dirError))
        std::cerr << "cadrelle: " << dirError << std::endl;
    WeekdayLog log(appDir);
    if (!log.Open())
        std::cerr << "cadrelle: cannot open the log file in " << appDir << "; running without a log" << std::endl;
    Preference& preferences = Preference::Instance();
    SetSettings(&preferences);
    Scheduler scheduler(appDir);
    scheduler.LoadSchedulerData();
    RegisterDesktopJobActions();

    HeadlessHost host;
    {
        SchedulerEngine engine(scheduler, host);
        const std::int64_t started = GetClock().NowMs();
        std::int64_t lastHousekeeping = started;
        std::int64_t lastLoggingCheck = started;
        // The trigger timer's first tick comes 2000 ms after start.
        constexpr std::int64_t kTriggerTimerMs = 2000;
        constexpr std::int64_t kHousekeepingMs = 1000;
        while (g_stopSignal.load() == 0) {
            host.WaitForWork(std::chrono::milliseconds(100));
            const std::int64_t now = GetClock().NowMs();
            if (!engine.IsStarted() && now - started >= kTriggerTimerMs)
                engine.StartChecking();
            engine.ProcessRequests();
            if (now - lastHousekeeping >= kHousekeepingMs) {
                lastHousekeeping = now;
                engine.HousekeepingTick();
            }
            if (now - lastLoggingCheck >= WeekdayLog::kTimerPeriodMs) {
                lastLoggingCheck = now;
                log.OnLoggingTimer(engine.ThreadCount(), engine.CheckTriggerCount());
            }
            // Lines of worker threads reach the file through the main thread.
            WeekdayLog::Flush();
        }
        wxLogMessage("%d *** ->> CadrelleFrame::~CadrelleFrame", LogMs());
        // Checker threads stop and are waited for before anything is saved;
        // web requests still running end as "Cancelled".
        engine.Shutdown();
        CancelWebRequests();
    }
    scheduler.SetDataChanged(true);
    scheduler.SaveSchedulerData(true);
    wxLogMessage("%d *** SaveSchedulerData(true) Completed", LogMs());
    preferences.SaveSettingParam();
    wxLogMessage("%d *** SaveSettingParam() Completed", LogMs());
    SetSettings(nullptr);
    wxLogMessage("%d <<- CadrelleFrame::~CadrelleFrame", LogMs());
    log.Close();  // the end banner
    return 0;
}

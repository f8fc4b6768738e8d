#include "app/headless_runner.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <iostream>
#include <mutex>
#include <vector>

#include <wx/log.h>

#include "core/core_log.h"
#include "desktop/control/control_server.h"
#include "desktop/control/instance_control.h"
#include "desktop/session/app_session.h"
#include "desktop/single_instance.h"

namespace {

// Written by the signal handler, which can reach nothing else: process-wide
// because signals are.
std::atomic<int> g_stopSignal{0};

// Only records the signal: the loop below sees it within 100 ms and ends the
// session on the main thread.
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
        wxLogMessage("%d ### [JID_%d] %s will run within %d seconds", LogMs(), job.GetId(),
                     JobTypeEnglishName(job.GetType()), kNoticeSeconds);
    }

    void WaitForWork(std::chrono::milliseconds period)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_wake.wait_for(lock, period, [this] { return m_bWoken; });
        m_bWoken = false;
    }
    // Any thread: `task` runs on the main thread at the loop's next pass
    // (requests of `cadrelle --status` and the other control commands).
    void Post(std::function<void()> task)
    {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_tasks.push_back(std::move(task));
        }
        WakeMainThread();
    }
    void RunPosted()
    {
        std::vector<std::function<void()>> tasks;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            tasks.swap(m_tasks);
        }
        for (auto& task : tasks)
            task();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_bWoken = false;
    std::vector<std::function<void()>> m_tasks;
};

}  // namespace

int RunHeadless(const wxString& appDir)
{
    const SingleInstanceGuard instance;
    if (instance.IsAnotherRunning()) {
        std::cerr << SingleInstanceGuard::RefusalMessage() << std::endl;
        return 1;
    }
    if (!instance.IsHeld()) {
        // Without it a second instance could fire every job a second time.
        std::cerr << "cadrelle: " << instance.Problem() << "; not starting." << std::endl;
        return 1;
    }
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, OnStopSignal);

    HeadlessHost host;
    AppSession session(appDir);
    session.Start(host);
    // What the data file held but did not load as written (also in the log).
    const wxString loadNote = session.LoadReport().Describe();
    if (!loadNote.empty())
        std::cerr << "cadrelle: " << loadNote.utf8_str().data() << std::endl;
    SchedulerEngine& engine = session.GetEngine();
    const std::unique_ptr<InstanceControl> control = MakeEngineControl(session.GetScheduler(), engine, &session.History());
    ControlServer server([&control](const ControlRequest& request) { return ServeControlRequest(*control, request); },
                         [&host](std::function<void()> task) { host.Post(std::move(task)); });
    std::string controlError;
    if (!server.Start(&controlError))
        std::cerr << "cadrelle: no control from the command line: " << controlError << std::endl;
    while (g_stopSignal.load() == 0) {
        host.WaitForWork(std::chrono::milliseconds(AppSession::kTickMs));
        session.Tick();
        engine.ProcessRequests();
        host.RunPosted();
    }
    session.Stop();
    // A final save that failed was told on stderr; the status says it too.
    return session.FinalSaveSucceeded() ? 0 : 1;
}

#include "desktop/session/app_session.h"

#include <iostream>

#include <wx/log.h>

#include "core/core_log.h"
#include "core/data/atomic_file.h"
#include "core/history/run_history.h"
#include "core/log/weekday_log.h"
#include "core/prefs/preference.h"
#include "desktop/desktop_actions.h"
#include "desktop/platform/idle_time_platform.h"

AppSession::AppSession(const wxString& appDir)
    : m_appDir(appDir), m_context(std::make_shared<SessionContext>()), m_pPrefs(Preference::OpenUserPreferences()),
      m_pLog(std::make_unique<WeekdayLog>(appDir, m_context->GetClock())),
      m_pScheduler(std::make_unique<Scheduler>(*m_context, appDir))
{
}

AppSession::~AppSession()
{
    if (IsRunning())
        Stop();
}

void AppSession::Start(EngineHost& host, UserMessages* messages)
{
    if (m_bStarted)
        return;
    m_bStarted = true;
    m_startedMs = m_context->GetClock().NowMs();
    m_lastHousekeepingMs = m_lastLoggingMs = m_startedMs;
    m_context->SetStartTime(m_context->GetClock().Now());
    m_context->SetMessages(messages);
    // The log first, so that loading the data file is logged too. Without a
    // file (a folder that cannot be written) the run goes on unlogged.
    wxString dirError;
    if (!EnsurePrivateDir(m_appDir, &dirError))
        std::cerr << "cadrelle: " << dirError << std::endl;
    if (!m_pLog->Open())
        std::cerr << "cadrelle: cannot open the log file in " << m_appDir << "; running without a log" << std::endl;
    m_context->SetSettings(m_pPrefs.get());
    // Preferences that could not be read were kept aside: the user is told,
    // in the window and on standard error alike.
    const wxString prefsProblem = m_pPrefs->ProblemMessage();
    if (!prefsProblem.empty()) {
        if (!m_context->Messages().EchoesToStderr())
            std::cerr << "cadrelle: " << prefsProblem.utf8_string() << std::endl;
        m_context->Messages().ShowMessage(prefsProblem, "Cadrelle");
    }
    m_pIdleTime = CreatePlatformIdleTimeSource();
    m_context->SetIdleTimeSource(m_pIdleTime.get());
    m_loadReport = LoadSchedulerData(*m_pScheduler);
    // Before the engine, so that no run goes unrecorded; a history that
    // cannot be opened has told the user and keeps trying.
    m_pHistory = std::make_unique<RunHistory>(*m_context, m_appDir + "/history.db");
    m_pHistory->Start();
    m_context->SetRecorder(m_pHistory.get());
    wxString limitsProblem;
    HistoryLimitsFromSettings(*m_context, &limitsProblem);
    if (!limitsProblem.empty())
        wxLogMessage("%d --- %s", LogMs(), limitsProblem.Trim());
    m_lastPruneMs = m_startedMs - kHistoryPruneMs;  // the first housekeeping prunes
    m_pJobs = RegisterDesktopJobActions(m_context->Actions());
    m_pEngine = std::make_unique<SchedulerEngine>(*m_pScheduler, m_context, host);
}

AppSession::TickResult AppSession::Tick()
{
    TickResult result;
    if (!IsRunning())
        return result;
    const std::int64_t now = m_context->GetClock().NowMs();
    if (!m_pEngine->IsStarted() && now - m_startedMs >= kTriggerTimerMs) {
        m_pEngine->StartChecking();
        result.checkingStarted = true;
    }
    if (now - m_lastHousekeepingMs >= kHousekeepingMs) {
        // A tick far behind its period means the main thread was held up:
        // the log says so, since nothing else would show it.
        if (now - m_lastHousekeepingMs > 2 * kHousekeepingMs)
            wxLogMessage("%d ### Main thread held up: housekeeping %lld ms apart", LogMs(),
                         static_cast<long long>(now - m_lastHousekeepingMs));
        m_lastHousekeepingMs = now;
        SaveWhenDue(*m_pScheduler);
        if (now - m_lastPruneMs >= kHistoryPruneMs) {
            m_lastPruneMs = now;
            m_pHistory->Prune(now, HistoryLimitsFromSettings(*m_context));
        }
        result.housekeepingRan = true;
    }
    if (now - m_lastLoggingMs >= WeekdayLog::kTimerPeriodMs) {
        m_lastLoggingMs = now;
        m_pLog->OnLoggingTimer(m_pEngine->ThreadCount(), m_pEngine->CheckTriggerCount());
    }
    // Lines of worker threads reach the file through the main thread.
    WeekdayLog::Flush();
    return result;
}

void AppSession::StopInOrder(const wxString& firstLine, const std::function<void()>& release)
{
    if (!IsRunning())
        return;
    m_bStopped = true;
    wxLogMessage("%d %s", LogMs(), firstLine);
    // Checker threads stop and are waited for before anything is saved; web
    // requests still running end as "Cancelled".
    m_pEngine->Shutdown();
    // Job threads still running were cut off by the shutdown: nothing
    // records any more, and what was recorded is written now.
    m_context->SetRecorder(nullptr);
    m_pHistory->Stop();
    CancelDesktopJobs(*m_pJobs);
    m_pScheduler->Changes().MarkChanged();
    m_bFinalSaveOk = SaveSchedulerData(*m_pScheduler, true) != DataSaveResult::Failed;
    wxLogMessage("%d *** SaveSchedulerData(true) Completed", LogMs());
    m_pPrefs->SaveSettingParam();
    wxLogMessage("%d *** SaveSettingParam() Completed", LogMs());
    if (release)
        release();
    m_pEngine.reset();
    // A job thread left running keeps the context, not what it pointed to.
    m_context->Detach();
    // The log keeps the lines the window's destructor has always written
    // here, with or without a window, so that logs read the same.
    wxLogMessage("%d <<- CadrelleFrame::~CadrelleFrame", LogMs());
    m_pLog->Close();  // the end banner
}

void AppSession::Stop(const std::function<void()>& release)
{
    StopInOrder("*** ->> CadrelleFrame::~CadrelleFrame", release);
}

void AppSession::EmergencyStop()
{
    StopInOrder("*** Ending without closing the windows; saving before the end", {});
}

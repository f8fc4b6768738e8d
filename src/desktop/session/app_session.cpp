#include "desktop/session/app_session.h"

#include <iostream>

#include <wx/log.h>

#include "core/app_start_time.h"
#include "core/clock.h"
#include "core/core_log.h"
#include "core/data/atomic_file.h"
#include "core/log/weekday_log.h"
#include "core/prefs/preference.h"
#include "core/settings_lookup.h"
#include "desktop/desktop_actions.h"
#include "desktop/jobs/web_refresh.h"

AppSession::AppSession(const wxString& appDir)
    : m_appDir(appDir), m_pLog(std::make_unique<WeekdayLog>(appDir)),
      m_pScheduler(std::make_unique<Scheduler>(appDir))
{
}

AppSession::~AppSession()
{
    if (IsRunning())
        Stop();
}

void AppSession::Start(EngineHost& host)
{
    if (m_bStarted)
        return;
    m_bStarted = true;
    SetAppStartTime(GetClock().Now());
    // The log first, so that loading the data file is logged too. Without a
    // file (a folder that cannot be written) the run goes on unlogged.
    wxString dirError;
    if (!EnsurePrivateDir(m_appDir, &dirError))
        std::cerr << "cadrelle: " << dirError << std::endl;
    if (!m_pLog->Open())
        std::cerr << "cadrelle: cannot open the log file in " << m_appDir << "; running without a log" << std::endl;
    SetSettings(&Preference::Instance());
    m_loadReport = m_pScheduler->LoadSchedulerData();
    RegisterDesktopJobActions();
    m_pEngine = std::make_unique<SchedulerEngine>(*m_pScheduler, host);
}

void AppSession::SaveAll()
{
    m_pScheduler->SetDataChanged(true);
    m_bFinalSaveOk = m_pScheduler->SaveSchedulerData(true) != DataSaveResult::Failed;
    wxLogMessage("%d *** SaveSchedulerData(true) Completed", LogMs());
    Preference::Instance().SaveSettingParam();
    wxLogMessage("%d *** SaveSettingParam() Completed", LogMs());
}

void AppSession::Stop(const std::function<void()>& release)
{
    if (!IsRunning())
        return;
    m_bStopped = true;
    wxLogMessage("%d *** ->> CadrelleFrame::~CadrelleFrame", LogMs());
    // Checker threads stop and are waited for before anything is saved; web
    // requests still running end as "Cancelled".
    m_pEngine->Shutdown();
    CancelWebRequests();
    SaveAll();
    if (release)
        release();
    m_pEngine.reset();
    SetSettings(nullptr);
    wxLogMessage("%d <<- CadrelleFrame::~CadrelleFrame", LogMs());
    m_pLog->Close();  // the end banner
}

void AppSession::EmergencyStop()
{
    if (!IsRunning())
        return;
    m_bStopped = true;
    wxLogMessage("%d *** Ending without closing the windows; saving before the end", LogMs());
    m_pEngine->Shutdown();
    SaveAll();
    wxLogMessage("%d <<- CadrelleFrame::~CadrelleFrame", LogMs());
    m_pLog->Close();
}

void AppSession::HousekeepingTick()
{
    if (!IsRunning())
        return;
    m_pEngine->HousekeepingTick();
    WeekdayLog::Flush();
}

void AppSession::LoggingTick()
{
    if (IsRunning())
        m_pLog->OnLoggingTimer(m_pEngine->ThreadCount(), m_pEngine->CheckTriggerCount());
}

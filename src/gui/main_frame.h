#pragma once
// The main window: the job list and the trigger list of the scheduler, which
// runs while the window is open.

#include <memory>

#include <wx/frame.h>
#include <wx/timer.h>

#include "core/engine/scheduler_engine.h"
#include "core/log/weekday_log.h"

class Scheduler;
class wxListCtrl;

class CadrelleFrame : public wxFrame, public EngineHost {
public:
    explicit CadrelleFrame(const wxString& appDir);
    ~CadrelleFrame() override;

    // EngineHost
    void WakeMainThread() override;
    void JobStarted(const Job& job) override;

private:
    void FillJobList();
    void FillTriggerList();
    void UpdateStatusBar();
    void Onm_timerTrigger(wxTimerEvent& event);
    void OnHousekeeping(wxTimerEvent& event);
    void Onm_timerLogging(wxTimerEvent& event);

    std::unique_ptr<WeekdayLog> m_pLog;
    std::unique_ptr<Scheduler> m_pScheduler;
    std::unique_ptr<SchedulerEngine> m_pEngine;
    wxTimer m_timerTrigger;
    wxTimer m_timerHousekeeping;
    wxTimer m_timerLogging;
    wxListCtrl* m_pLcJob = nullptr;
    wxListCtrl* m_pLcTrigger = nullptr;
    wxString m_strLoadNote;
};

#pragma once
// The main window: the job list and the trigger list of the scheduler.

#include <memory>

#include <wx/frame.h>

class Scheduler;
class wxListCtrl;

class CadrelleFrame : public wxFrame {
public:
    explicit CadrelleFrame(const wxString& appDir);
    ~CadrelleFrame() override;

private:
    void FillJobList();
    void FillTriggerList();

    std::unique_ptr<Scheduler> m_pScheduler;
    wxListCtrl* m_pLcJob = nullptr;
    wxListCtrl* m_pLcTrigger = nullptr;
};

#pragma once
// The Agenda pane: every run of the next day, week or month, grouped by day
// (BuildAgenda, the engine's own search); a double click opens the job.

#include <cstdint>
#include <functional>

#include <wx/dataview.h>
#include <wx/panel.h>

#include "core/agenda/agenda.h"

class Scheduler;
class wxChoice;
class wxStaticText;

class AgendaPane : public wxPanel {
public:
    // `openJob` is called with the JID of a double-clicked run.
    AgendaPane(wxWindow* parent, const Scheduler& scheduler, std::function<void(std::int32_t)> openJob);

    // Builds the list anew.
    void Rebuild();
    // Builds it anew when the jobs changed or a minute passed, at most every
    // two seconds (firings change the data every second at worst).
    void RefreshIfStale();
    const Agenda& Current() const { return m_agenda; }
    wxDataViewCtrl* List() const { return m_pList; }

private:
    const Scheduler& m_scheduler;
    std::function<void(std::int32_t)> m_openJob;
    wxChoice* m_pWindow = nullptr;
    wxStaticText* m_pSummary = nullptr;
    wxDataViewCtrl* m_pList = nullptr;
    wxObjectDataPtr<wxDataViewVirtualListModel> m_model;
    Agenda m_agenda;
    std::uint64_t m_builtAtChange = 0;
    long long m_builtAtMs = 0;
};

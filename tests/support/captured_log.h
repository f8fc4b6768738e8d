#pragma once
// Every log record while the object lives (the active target meanwhile).

#include <mutex>
#include <vector>

#include <wx/log.h>

class CapturedLog : public wxLog {
public:
    CapturedLog() : m_previous(wxLog::SetActiveTarget(this)) {}
    ~CapturedLog() override;
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    // Flushes records queued by worker threads first, when on the main thread.
    std::vector<wxString> Lines();
    std::vector<wxString> Matching(const wxString& part);
    bool Has(const wxString& part) { return IndexOf(part) >= 0; }
    // Position of the first line containing `part`, or -1.
    int IndexOf(const wxString& part);

protected:
    void DoLogRecord(wxLogLevel level, const wxString& msg, const wxLogRecordInfo& info) override;

private:
    wxLog* m_previous;
    std::mutex m_mutex;
    std::vector<wxString> m_lines;
};

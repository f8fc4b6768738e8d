#pragma once
// Log records captured for tests that assert on the lines a job writes.

#include <mutex>
#include <vector>

#include <wx/log.h>

// Keeps every log record. Records of worker threads are queued by the
// toolkit until the main thread flushes, which Lines() does first.
class CapturedLog : public wxLog {
public:
    std::vector<wxString> Lines();
    // The lines that contain `part`.
    std::vector<wxString> Matching(const wxString& part);
    bool Has(const wxString& part) { return !Matching(part).empty(); }
    // Position of the first line containing `part`, or -1.
    int IndexOf(const wxString& part);

protected:
    void DoLogRecord(wxLogLevel level, const wxString& msg, const wxLogRecordInfo& info) override;

private:
    std::mutex m_mutex;
    std::vector<wxString> m_lines;
};

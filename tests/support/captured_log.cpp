#include "captured_log.h"

#include <wx/thread.h>

CapturedLog::~CapturedLog()
{
    if (wxThread::IsMain())
        wxLog::FlushActive();
    if (wxLog::GetActiveTarget() == this)
        wxLog::SetActiveTarget(m_previous);
}

std::vector<wxString> CapturedLog::Lines()
{
    if (wxThread::IsMain())
        wxLog::FlushActive();
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
}

std::vector<wxString> CapturedLog::Matching(const wxString& part)
{
    std::vector<wxString> found;
    for (const wxString& line : Lines())
        if (line.Contains(part))
            found.push_back(line);
    return found;
}

int CapturedLog::IndexOf(const wxString& part)
{
    const std::vector<wxString> lines = Lines();
    for (std::size_t i = 0; i < lines.size(); ++i)
        if (lines[i].Contains(part))
            return static_cast<int>(i);
    return -1;
}

void CapturedLog::DoLogRecord(wxLogLevel, const wxString& msg, const wxLogRecordInfo&)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_lines.push_back(msg);
}

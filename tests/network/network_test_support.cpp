#include "network_test_support.h"

#include <wx/thread.h>

void CapturedMessages::ShowMessage(const wxString& text, const wxString& caption)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_shown.emplace_back(text, caption);
}

std::vector<std::pair<wxString, wxString>> CapturedMessages::Shown()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_shown;
}

void NetworkJobTest::SetUp()
{
    m_previous = wxLog::SetActiveTarget(&log);
    SetUserMessages(&messages);
}

void NetworkJobTest::TearDown()
{
    wxLog::FlushActive();
    wxLog::SetActiveTarget(m_previous);
    SetUserMessages(nullptr);
}

void NetworkJobTest::RunJob(std::uint32_t kind, const ParamList& params, std::int32_t jid)
{
    std::unique_ptr<Job> job = CreateJob(kind);
    ASSERT_TRUE(job);
    JobParam param;
    param.id = jid;
    param.type = kind;
    param.params = params;
    job->SetParam(param);
    job->Execute();
}

std::string Bytes(std::initializer_list<int> values)
{
    std::string bytes;
    for (int v : values)
        bytes += static_cast<char>(v);
    return bytes;
}

wxString PortText(std::uint16_t port)
{
    return wxString::Format("%u", static_cast<unsigned>(port));
}

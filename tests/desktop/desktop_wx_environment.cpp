// wxBase initialised once for the desktop test program, on the main thread, so
// that log records of worker threads are queued for the main thread as in
// the real program.

#include <gtest/gtest.h>
#include <wx/init.h>
#include <wx/log.h>

namespace {

// Swallows every record: the tests that read log lines install their own.
class NoLog : public wxLog {
protected:
    void DoLogRecord(wxLogLevel, const wxString&, const wxLogRecordInfo&) override {}
};

class WxEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        m_init = new wxInitializer;
        delete wxLog::SetActiveTarget(new NoLog);
    }
    void TearDown() override { delete m_init; }

private:
    wxInitializer* m_init = nullptr;
};

[[maybe_unused]] ::testing::Environment* const g_wx = ::testing::AddGlobalTestEnvironment(new WxEnvironment);

}  // namespace

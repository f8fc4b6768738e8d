#include "harness.h"

#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>
#include <wx/init.h>

namespace {

// Swallows every record: tests that read log lines install a CapturedLog.
class NoLog : public wxLog {
protected:
    void DoLogRecord(wxLogLevel, const wxString&, const wxLogRecordInfo&) override {}
};

class WxEnvironment : public ::testing::Environment {
    std::unique_ptr<wxInitializer> m_init;
    void SetUp() override { m_init = std::make_unique<wxInitializer>(), delete wxLog::SetActiveTarget(new NoLog); }
    void TearDown() override { m_init.reset(); }
};

[[maybe_unused]] ::testing::Environment* const g_wx = ::testing::AddGlobalTestEnvironment(new WxEnvironment);

}  // namespace

bool WaitUntil(const std::function<bool()>& done, int timeoutMs)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

ProcessResult RunProcess(const std::vector<std::string>& argv, const ChildEnvironment& environment, int limitMs)
{
    const TempDir scratch;
    ChildProcess child;
    ProcessResult result;
    if (child.Start(argv, scratch.File("out").utf8_string(), environment, scratch.File("err").utf8_string()))
        result.status = child.Stop(0, limitMs);
    result.out = ReadFileBytes(scratch.File("out"));
    result.err = ReadFileBytes(scratch.File("err"));
    return result;
}

ScopedEnv::ScopedEnv(const char* name, const char* value) : m_name(name)
{
    if (const char* old = std::getenv(name))
        m_old = old;
    SetEnvVar(name, value);
}

ScopedEnv::~ScopedEnv() { SetEnvVar(m_name.c_str(), m_old ? m_old->c_str() : nullptr); }

void RecordedMessages::Add(RecordedMessage message)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_messages.push_back(std::move(message));
    m_changed.notify_all();
}

std::vector<RecordedMessage> RecordedMessages::All() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_messages;
}

std::vector<std::string> RecordedMessages::Texts(RecordedMessage::Kind kind) const
{
    std::vector<std::string> texts;
    for (const RecordedMessage& message : All())
        if (message.kind == kind)
            texts.push_back(message.text);
    return texts;
}

bool RecordedMessages::WaitForCount(std::size_t count, std::chrono::milliseconds timeout) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, timeout, [&] { return m_messages.size() >= count; });
}

SessionContext& HarnessContext()
{
    static SessionContext context;
    return context;
}

wxString RunJob(std::uint32_t kind, const ParamList& params, std::int32_t jid, const wxString& description,
                SessionContext& context, RunReport* report)
{
    RunReport unused;
    const RunReportScope scope(report ? *report : unused);
    std::unique_ptr<Job> job = CreateJob(kind);
    if (!job) {
        ADD_FAILURE() << "no job of kind " << kind;
        return {};
    }
    JobParam param;
    std::tie(param.id, param.type, param.description, param.params) = std::tie(jid, kind, description, params);
    job->SetParam(param);
    context.Actions().Run(*job, context);
    return job->GetSummary();
}

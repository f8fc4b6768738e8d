#include "core/engine/engine_mailbox.h"

#include <chrono>

bool EngineMailbox::Post(EngineRequest request)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_bClosed)
        return false;
    const bool wasEmpty = m_requests.empty();
    m_requests.push_back(std::move(request));
    if (wasEmpty && m_wake)
        m_wake();
    return true;
}

std::deque<EngineRequest> EngineMailbox::TakeAll()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::deque<EngineRequest> taken;
    taken.swap(m_requests);
    return taken;
}

void EngineMailbox::Close()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_bClosed = true;
    m_requests.clear();
    m_closed.notify_all();
}

bool EngineMailbox::IsClosed() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_bClosed;
}

bool EngineMailbox::IsSilent() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_bSilent;
}

void EngineMailbox::SetSilent(bool silent)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_bSilent = silent;
}

std::uint64_t EngineMailbox::JobThreadStarted(std::int32_t jid)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const std::uint64_t token = m_nextToken++;
    m_running.emplace(token, jid);
    return token;
}

void EngineMailbox::JobThreadEnded(std::uint64_t token)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_running.erase(token);
    m_ended.push_back(token);
    if (m_running.empty())
        m_jobThreadsDone.notify_all();
    if (m_ended.size() == 1 && m_wake)
        m_wake();
}

std::vector<std::uint64_t> EngineMailbox::TakeEnded()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::uint64_t> ended;
    ended.swap(m_ended);
    return ended;
}

bool EngineMailbox::WaitForJobThreads(int timeoutMs)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_jobThreadsDone.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return m_running.empty(); });
}

std::vector<std::int32_t> EngineMailbox::RunningJobIds() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::int32_t> ids;
    for (const auto& entry : m_running)
        ids.push_back(entry.second);
    return ids;
}

bool EngineMailbox::SleepUnlessClosed(int ms)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_closed.wait_for(lock, std::chrono::milliseconds(ms), [this] { return m_bClosed; });
}

void EngineMailbox::ReportUnlessAbandoned(const std::function<void()>& report)
{
    std::lock_guard<std::mutex> lock(m_reportMutex);
    if (!m_bAbandoned)
        report();
}

void EngineMailbox::Abandon()
{
    // Waits for a report under way: once this returns, none follows.
    std::lock_guard<std::mutex> lock(m_reportMutex);
    m_bAbandoned = true;
}

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

void EngineMailbox::JobThreadStarted()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    ++m_nJobThreads;
}

void EngineMailbox::JobThreadEnded()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (--m_nJobThreads == 0)
        m_jobThreadsDone.notify_all();
}

bool EngineMailbox::WaitForJobThreads(int timeoutMs)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_jobThreadsDone.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return m_nJobThreads == 0; });
}

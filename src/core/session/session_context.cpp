#include "core/session/session_context.h"

SessionContext::SessionContext() : SessionContext(TheSystemClock()) {}

SessionContext::SessionContext(Clock& clock) : m_clock(clock) {}

void SessionContext::SetSettings(const SettingsLookup* settings)
{
    m_settings.store(settings ? settings : &m_defaultSettings, std::memory_order_release);
}

void SessionContext::SetMessages(UserMessages* messages)
{
    m_messages.store(messages ? messages : &m_logMessages, std::memory_order_release);
}

void SessionContext::SetIdleTimeSource(IdleTimeSource* source)
{
    m_idle.store(source ? source : &m_noIdleTime, std::memory_order_release);
}

void SessionContext::SetRecorder(RunRecorder* recorder)
{
    m_recorder.store(recorder ? recorder : &m_noRecorder, std::memory_order_release);
}

void SessionContext::Detach()
{
    SetRecorder(nullptr);
    SetSettings(nullptr);
    SetMessages(nullptr);
    SetIdleTimeSource(nullptr);
}

wxDateTime SessionContext::StartTime() const
{
    std::lock_guard<std::mutex> lock(m_startMutex);
    if (!m_start.IsValid())
        m_start = m_clock.Now();
    return m_start;
}

void SessionContext::SetStartTime(const wxDateTime& moment)
{
    std::lock_guard<std::mutex> lock(m_startMutex);
    m_start = moment;
}

bool SessionContext::IsMissFiredRefireOn() const
{
    static const wxString name = "execMissFiredTrigger";
    return Settings().GetSetting(name) == "1";
}

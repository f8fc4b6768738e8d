#include "core/triggers/idle_timeout_trigger.h"

#include "core/session/session_context.h"
#include "core/text_number.h"
#include "core/triggers/condition_tokens.h"
#include "core/triggers/trigger_time.h"

void IdleTimeoutTrigger::Load(const TriggerParam& param)
{
    LoadCommon(param);
    // The next fire time carries no meaning here: 1 January 00:00:00.000.
    if (m_dtRecordedNextFire.IsValid())
        m_dtNextFire = wxDateTime(1, wxDateTime::Jan, m_dtRecordedNextFire.Get().GetYear(), 0, 0, 0, 0);
    // Positions 0, 1 and 2; a later one overrides an earlier one.
    const std::vector<wxString> tokens = SplitConditionTokens(m_strCondition);
    for (std::size_t position = 0; position < 3 && position < tokens.size(); ++position) {
        if (tokens[position] != "-") {
            m_nUnit = static_cast<int>(position);
            m_nAmount = static_cast<int>(LeadingLong(tokens[position]));
        }
    }
}

wxString IdleTimeoutTrigger::GetCondition() const
{
    switch (m_nUnit) {
    case UnitSeconds: return wxString::Format("%d - - - - -", m_nAmount);
    case UnitMinutes: return wxString::Format("- %d - - - -", m_nAmount);
    case UnitHours: return wxString::Format("- - %d - - -", m_nAmount);
    default: return m_strCondition;
    }
}

bool IdleTimeoutTrigger::CheckAndAdvance()
{
    if (!IsEnabled()) {
        SetStatus(NTriggerStatusDisable);
        return false;
    }
    if (m_nAmount <= 0)
        return false;
    if (!Context().IdleTime().IsAvailable()) {
        SetStatus(NTriggerStatusNoIdleTime);
        return false;
    }
    if (GetStatus() == NTriggerStatusNoIdleTime)
        SetStatus(NTriggerStatusWaiting);
    if (m_nAfterFire == 0)
        m_nIdleSeconds = Context().IdleTime().IdleSeconds();
    if (m_nAfterFire > kQuietChecks - 1) {
        m_nAfterFire = 0;
        return false;
    }
    if (m_nAfterFire > 0) {
        ++m_nAfterFire;
        return false;
    }
    const wxDateTime now = FromMs(NowMs());
    // Never twice in one second.
    const wxDateTime prev = m_dtPrevFire.Get();
    if (prev.GetHour() == now.GetHour() && prev.GetMinute() == now.GetMinute() && prev.GetSecond() == now.GetSecond())
        return false;
    long threshold = 0;
    switch (m_nUnit) {
    case UnitSeconds: threshold = m_nAmount; break;
    case UnitMinutes: threshold = static_cast<long>(m_nAmount) * 60; break;
    case UnitHours: threshold = static_cast<long>(m_nAmount) * 3600; break;
    default: return false;
    }
    // Exactly the threshold: a longer idle period must not fire again.
    if (m_nIdleSeconds != threshold)
        return false;
    m_nAfterFire = 1;
    wxDateTime fired = now;
    m_dtPrevFire = fired.SetMillisecond(0);
    m_bFirePending = true;
    return true;
}

bool IdleTimeoutTrigger::IsDue(int toleranceSec) const
{
    return IsEnabled() && NextFireWithin(toleranceSec);
}

#include "core/triggers/cron_driven_trigger.h"

#include "core/clock.h"
#include "core/settings_lookup.h"
#include "core/shared_lock.h"
#include "core/triggers/trigger_time.h"

namespace {

wxDateTime MomentOrInvalid(std::int64_t ms)
{
    return ms >= 0 ? FromMs(ms) : wxDateTime();
}

}  // namespace

void CronDrivenTrigger::Load(const TriggerParam& param)
{
    LoadCommon(param);
    const std::int64_t nowSec = FloorSeconds(GetClock().NowMs());
    const CronMoments moments = m_schedule.Lookup(m_strCondition, ConditionVersion(), nowSec, GetTid());
    m_dtNextFire = MomentOrInvalid(moments.next1Ms);
    if (m_dtNextFire.IsValid())
        m_dtNextFire.SetSecond(0).SetMillisecond(0);
}

bool CronDrivenTrigger::InActivePeriod(std::int64_t nowMs) const
{
    const std::int64_t start = ToMs(m_dtStart);
    const std::int64_t end = ToMs(m_dtEnd);
    return nowMs == start || nowMs == end || (start < nowMs && nowMs < end);
}

bool CronDrivenTrigger::CheckAndAdvance()
{
    if (!IsEnabled()) {
        SetStatus(NTriggerStatusDisable);
        return false;
    }
    const std::int64_t now = GetClock().NowMs();
    if (!InActivePeriod(now)) {
        SetStatus(now < ToMs(m_dtStart) ? NTriggerStatusWaitStart : NTriggerStatusWaiting);
        if (ToMs(m_dtEnd) < now)
            SetStatus(NTriggerStatusTimeout);
        return false;
    }
    SetStatus(NTriggerStatusWaiting);

    const CronMoments moments = m_schedule.Lookup(m_strCondition, ConditionVersion(), FloorSeconds(now), GetTid());
    if (moments.next1Ms < 0) {
        m_dtNextFire = wxDateTime();
        return false;
    }
    const std::int64_t next = moments.next1Ms;
    if (!m_dtNextFire.IsValid() || ToMs(m_dtNextFire) != next)
        m_dtNextFire = FromMs(next);

    // Never twice for one match.
    if (next - ToMs(m_dtPrevFire) < kDoubleFireGuardMs)
        return false;

    // A firing missed while the program was not running is made up once,
    // when the user asked for it. The setting is read last: it is the only
    // costly test.
    if (IsAfter1999(m_dtRecordedNextFire)) {
        const std::int64_t recorded = ToMs(m_dtRecordedNextFire);
        if (recorded < next && recorded > ToMs(m_dtPrevFire) && IsMissFiredRefireOn()) {
            wxCriticalSectionLocker lock(SharedLock());
            m_dtPrevFire = FromMs(now);
            m_bFirePending = true;
            m_dtRecordedNextFire = m_dtNextFire;
            return true;
        }
    }

    if (now >= next - kFireWindowMs && now <= next) {
        m_dtPrevFire = m_dtNextFire;
        m_dtNextFire = MomentOrInvalid(moments.next2Ms);
        m_bFirePending = true;
        return true;
    }
    return false;
}

bool CronDrivenTrigger::IsDue(int toleranceSec) const
{
    // No ENABLE test here: a disabled trigger's check already said "Disable".
    return InActivePeriod(GetClock().NowMs()) && NextFireWithin(toleranceSec);
}

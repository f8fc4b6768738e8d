#include "core/triggers/cron_driven_trigger.h"

#include <algorithm>

#include "core/session/session_context.h"
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
    m_bConditionInvalid = !m_schedule.IsConditionValid(m_strCondition, ConditionVersion(), GetTid(), Context().Messages());
    // The moment the first check will aim at, to the second: the list (and
    // a save before that check) shows when it fires, not the minute it falls in.
    m_dtNextFire = MomentOrInvalid(m_schedule.MomentsAfter(FloorSeconds(NowMs())).next1Ms);
}

bool CronDrivenTrigger::InActivePeriod(std::int64_t nowMs) const
{
    const std::int64_t start = m_dtStart.Ms();
    const std::int64_t end = m_dtEnd.Ms();
    return nowMs == start || nowMs == end || (start < nowMs && nowMs < end);
}

bool CronDrivenTrigger::CheckAndAdvance()
{
    // A malformed condition never fires, enabled or not, and says so in the
    // trigger list until it is corrected.
    const bool valid = m_schedule.IsConditionValid(m_strCondition, ConditionVersion(), GetTid(), Context().Messages());
    if (m_bConditionInvalid.load(std::memory_order_relaxed) == valid)
        m_bConditionInvalid.store(!valid, std::memory_order_relaxed);
    if (!valid) {
        m_dtNextFire.SetMs(AtomicMoment::kInvalid);
        return false;
    }
    if (!IsEnabled()) {
        SetStatus(NTriggerStatusDisable);
        return false;
    }
    const std::int64_t now = NowMs();
    if (!InActivePeriod(now)) {
        SetStatus(now < m_dtStart.Ms() ? NTriggerStatusWaitStart : NTriggerStatusWaiting);
        if (m_dtEnd.Ms() < now)
            SetStatus(NTriggerStatusTimeout);
        return false;
    }
    SetStatus(NTriggerStatusWaiting);

    // The condition was parsed (when it had to be) at the top of this check.
    const CronMoments moments = m_schedule.MomentsAfter(FloorSeconds(now));
    if (moments.next1Ms < 0) {
        m_dtNextFire.SetMs(AtomicMoment::kInvalid);
        return false;
    }
    const std::int64_t next = moments.next1Ms;
    m_dtNextFire.SetMs(next);

    // Never twice for one match. A last firing that lies ahead (the clock
    // was set back) blocks nothing: the first match after the new time fires.
    const std::int64_t prev = m_dtPrevFire.Ms();
    if (prev != AtomicMoment::kInvalid && next - prev < kDoubleFireGuardMs && prev - next < kDoubleFireGuardMs)
        return false;

    // A firing missed while the program was not running is made up once,
    // when the user asked for it. The setting is read last: it is the only
    // costly test.
    if (IsAfter1999(m_dtRecordedNextFire)) {
        const std::int64_t recorded = m_dtRecordedNextFire.Ms();
        if (recorded < next && recorded > prev && Context().IsMissFiredRefireOn()) {
            m_dtPrevFire.SetMs(now);
            m_bFirePending = true;
            m_dtRecordedNextFire = m_dtNextFire;
            return true;
        }
    }

    if (now >= next - kFireWindowMs && now <= next) {
        m_dtPrevFire = m_dtNextFire;
        m_dtNextFire.SetMs(moments.next2Ms >= 0 ? moments.next2Ms : AtomicMoment::kInvalid);
        m_bFirePending = true;
        return true;
    }
    return false;
}

std::int64_t CronDrivenTrigger::NextCheckMs(std::int64_t nowMs, int noticeSec) const
{
    if (m_bConditionInvalid.load(std::memory_order_relaxed))
        return kNeverMs;
    const std::int64_t start = m_dtStart.Ms();
    if (!InActivePeriod(nowMs))
        return nowMs < start ? start : kNeverMs;
    // Just after the end the status turns to "Timeout".
    const std::int64_t end = m_dtEnd.Ms();
    std::int64_t due = end < kNeverMs ? end + 1 : kNeverMs;
    const CronMoments moments = m_schedule.LastMoments();
    if (moments.next1Ms < 0)
        return due;
    const std::int64_t next = moments.next1Ms;
    // While a missed firing could still be made up (the setting may be
    // switched on at any time), every pass looks.
    const std::int64_t recorded = m_dtRecordedNextFire.Ms();
    if (IsAfter1999(m_dtRecordedNextFire) && recorded < next && recorded > m_dtPrevFire.Ms())
        return nowMs;
    due = std::min(due, next - kFireWindowMs);
    if (!IsNoticeGiven())
        due = std::min(due, next - static_cast<std::int64_t>(noticeSec) * 1000);
    return due;
}

bool CronDrivenTrigger::IsDue(int toleranceSec) const
{
    // No ENABLE test here: a disabled trigger's check already said "Disable".
    return InActivePeriod(NowMs()) && NextFireWithin(toleranceSec);
}

#include "core/triggers/trigger.h"

#include <algorithm>

#include "core/datetime_text.h"
#include "core/session/session_context.h"
#include "core/triggers/trigger_time.h"

namespace {

const char* const kStatusNames[NTriggerStatusCount] = {
    wxTRANSLATE("Wait Start"), wxTRANSLATE("Waiting"), wxTRANSLATE("Fired"),   wxTRANSLATE("Timeout"),
    wxTRANSLATE("Disable"),    wxTRANSLATE("Editing"), wxTRANSLATE("Invalid"),
    wxTRANSLATE("No idle time"),
};

}  // namespace

wxString TriggerStatusName(std::uint32_t status)
{
    return status < NTriggerStatusCount ? wxString(kStatusNames[status]) : wxString();
}

Trigger::Trigger(std::uint32_t type, const SessionContext& context)
    : m_dtStart(DefaultPeriodStart()), m_dtEnd(DefaultPeriodEnd()), m_nType(type), m_context(context)
{
    const wxDateTime neverFired = NeverFiredAt(context.GetClock().Now());
    m_dtPrevFire = neverFired;
    m_dtRecordedNextFire = neverFired;
    m_dtNextFire = neverFired;
}

std::int64_t Trigger::NowMs() const
{
    return m_context.GetClock().NowMs();
}

void Trigger::LoadCommon(const TriggerParam& param)
{
    ++m_nConditionVersion;
    m_nTid = param.tid;
    SetEnable(param.enable);
    SetEditing(param.editing);
    SetFinished(param.finished);
    SetFirePending(param.firePending);
    SetNoticeGiven(param.noticeGiven);
    m_strCondition = param.condition;
    const auto read = [](const wxString& text, AtomicMoment& field) {
        wxDateTime dt = field.Get();
        ReadDateTimeText(text, dt);
        field = dt;
    };
    read(param.prevFire, m_dtPrevFire);
    read(param.nextFire, m_dtRecordedNextFire);
    read(param.start, m_dtStart);
    read(param.end, m_dtEnd);
}

void Trigger::Load(const TriggerParam& param)
{
    LoadCommon(param);
    m_dtNextFire = m_dtRecordedNextFire;
}

void Trigger::MakeParam(TriggerParam& param) const
{
    param.tid = m_nTid;
    param.type = m_nType;
    param.enable = IsEnabled();
    param.editing = IsEditing();
    param.finished = IsFinished();
    param.firePending = IsFirePending();
    param.noticeGiven = IsNoticeGiven();
    param.condition = GetCondition();
    param.prevFire = FormatDateTimeText(m_dtPrevFire);
    param.nextFire = FormatDateTimeText(m_dtNextFire);
    param.start = FormatDateTimeText(m_dtStart);
    param.end = FormatDateTimeText(m_dtEnd);
}

bool Trigger::IsDue(int toleranceSec) const
{
    return IsEnabled() && NextFireWithin(toleranceSec);
}

std::int64_t Trigger::NextCheckMs(std::int64_t nowMs, int noticeSec) const
{
    // The one-shot rule: nothing happens before the fire window or the
    // notice; a moment already passed finishes the trigger at its next check.
    if (!m_dtNextFire.IsValid())
        return kNeverMs;
    const std::int64_t next = m_dtNextFire.Ms();
    if (next < nowMs)
        return nowMs;
    std::int64_t due = next - kFireWindowMs;
    if (!IsNoticeGiven())
        due = std::min(due, next - static_cast<std::int64_t>(noticeSec) * 1000);
    return due;
}

bool Trigger::NextFireWithin(int toleranceSec) const
{
    if (!m_dtNextFire.IsValid())
        return false;
    const std::int64_t now = NowMs();
    const std::int64_t next = m_dtNextFire.Ms();
    return next >= now && now >= next - static_cast<std::int64_t>(toleranceSec) * 1000;
}

bool Trigger::CheckOneShot(bool mayRefireMissed)
{
    if (!IsEnabled()) {
        SetStatus(NTriggerStatusDisable);
        return false;
    }
    if (!m_dtNextFire.IsValid())
        return false;
    const std::int64_t now = NowMs();
    const std::int64_t next = m_dtNextFire.Ms();
    if (next < now) {
        // The moment passed: made up once when the user asked for it and
        // the trigger never fired, otherwise missed for good.
        const bool refire = mayRefireMissed && IsInYear1999(m_dtPrevFire) && m_context.IsMissFiredRefireOn();
        if (refire)
            m_dtPrevFire.SetMs(now);
        SetFinished(true);
        SetStatus(NTriggerStatusFired);
        return refire;
    }
    if (now >= next - kFireWindowMs) {
        m_dtPrevFire = m_dtNextFire;
        SetFinished(true);
        SetStatus(NTriggerStatusFired);
        return true;
    }
    return false;
}

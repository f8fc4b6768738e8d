#include "core/triggers/one_shot_triggers.h"

#include <array>

#include <wx/log.h>

#include "core/core_log.h"
#include "core/datetime_text.h"
#include "core/session/session_context.h"
#include "core/text_number.h"
#include "core/triggers/condition_tokens.h"

namespace {

// The numbers of a condition ("-" and junk read as 0); returns how many
// tokens there were.
template <std::size_t N>
std::size_t ReadNumbers(const wxString& text, std::array<long, N>& out)
{
    const std::vector<wxString> tokens = SplitConditionTokens(text);
    for (std::size_t i = 0; i < N && i < tokens.size(); ++i)
        out[i] = LeadingLong(tokens[i]);
    return tokens.size();
}

TriggerDuration DurationFrom(long days, long hours, long minutes, long seconds)
{
    TriggerDuration d;
    d.days = static_cast<int>(days);
    d.hours = static_cast<int>(hours);
    d.minutes = static_cast<int>(minutes);
    d.seconds = static_cast<int>(seconds);
    return d;
}

}  // namespace

wxDateTime TriggerDuration::AddTo(const wxDateTime& from) const
{
    const wxLongLong ms = ((static_cast<wxLongLong>(hours) * 60 + minutes) * 60 + seconds) * 1000;
    return from + wxDateSpan::Days(days) + wxTimeSpan::Milliseconds(ms);
}

void SpecTimeTrigger::Load(const TriggerParam& param)
{
    LoadCommon(param);
    wxDateTime moment = DefaultPeriodStart();
    if (ReadDateTimeText(m_strCondition, moment)) {
        m_dtNextFire = moment;
    } else {
        m_dtNextFire = wxDateTime();
        wxLogMessage("%d ### [TID_%lld] the Specical Time condition \"%s\" holds no moment; it will not fire", LogMs(),
                     static_cast<long long>(GetTid()), m_strCondition);
    }
}

void CountDownTrigger::Load(const TriggerParam& param)
{
    LoadCommon(param);
    std::array<long, 10> n{};
    const std::size_t count = ReadNumbers(m_strCondition, n);
    if (count < 6) {
        m_dtNextFire = wxDateTime();
        wxLogMessage("%d ### [TID_%lld] the Count Down condition \"%s\" holds no moment; it will not fire", LogMs(),
                     static_cast<long long>(GetTid()), m_strCondition);
        return;
    }
    // Same order as a date-time text; the year stands at position 5 here.
    wxDateTime moment = DefaultPeriodStart();
    ReadDateTimeText(wxString::Format("%ld %ld %ld %ld %ld * %ld", n[0], n[1], n[2], n[3], n[4], n[5]), moment);
    m_dtNextFire = moment;
    m_duration = DurationFrom(n[6], n[7], n[8], n[9]);
}

wxString CountDownTrigger::GetCondition() const
{
    if (!m_dtNextFire.IsValid())
        return m_strCondition;
    const wxDateTime::Tm tm = m_dtNextFire.Get().GetTm();
    return wxString::Format("%d %d %d %d %d %d %d %d %d %d", tm.sec, tm.min, tm.hour, tm.mday,
                            static_cast<int>(tm.mon) + 1, tm.year, m_duration.days, m_duration.hours,
                            m_duration.minutes, m_duration.seconds);
}

void WithStartTrigger::Load(const TriggerParam& param)
{
    LoadCommon(param);
    std::array<long, 4> n{};
    ReadNumbers(m_strCondition, n);
    m_duration = DurationFrom(n[0], n[1], n[2], n[3]);
    ArmFromStart(Context().StartTime());
}

bool WithStartTrigger::ArmFromStart(const wxDateTime& from)
{
    m_dtNextFire = m_duration.AddTo(from);
    return true;
}

wxString WithStartTrigger::GetCondition() const
{
    return wxString::Format("%d %d %d %d - -", m_duration.days, m_duration.hours, m_duration.minutes,
                            m_duration.seconds);
}

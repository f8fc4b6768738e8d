#include "core/triggers/cron_schedule.h"

#include <iostream>

#include <wx/log.h>

#include "core/core_log.h"
#include "core/cron/cron_local_time.h"
#include "core/translate.h"
#include "core/user_messages.h"

namespace {

// The first second of the local year after the one holding `sec`.
std::int64_t StartOfNextLocalYear(std::int64_t sec)
{
    std::time_t t = static_cast<std::time_t>(sec);
    std::tm tm{};
    if (!cron::LocalTm(t, tm))
        return sec + 1;
    std::tm next{};
    next.tm_year = tm.tm_year + 1;
    next.tm_mon = 0;
    next.tm_mday = 1;
    next.tm_isdst = -1;
    const std::time_t start = std::mktime(&next);
    return start == static_cast<std::time_t>(-1) ? sec + 1 : static_cast<std::int64_t>(start);
}

CronMoments Search(const CronExpr& expr, std::int64_t nowSec)
{
    CronMoments m;
    const std::time_t next1 = CronNext(expr, static_cast<std::time_t>(nowSec));
    if (next1 == static_cast<std::time_t>(-1))
        return m;
    m.next1Ms = static_cast<std::int64_t>(next1) * 1000;
    const std::time_t next2 = CronNext(expr, next1);
    if (next2 != static_cast<std::time_t>(-1))
        m.next2Ms = static_cast<std::int64_t>(next2) * 1000;
    return m;
}

}  // namespace

void CronSchedule::Parse(const wxString& condition, UserMessages* report, std::int64_t tid)
{
    m_bParsed = true;
    m_bValid = false;
    m_expr.reset();
    try {
        // Wide text to 8-bit characters in the current locale.
        m_expr = ParseCronExpr(condition.ToStdString());
    } catch (const cron::bad_cronexpr& e) {
        if (report) {
            wxLogMessage("%d ### [TID_%lld] cron condition \"%s\": %s", LogMs(), static_cast<long long>(tid),
                         condition, wxString(e.what()));
            // Standard error names the trigger, as the log does: the parser's
            // text alone does not say which of many triggers is wrong.
            const wxString named = wxString::Format("trigger TID_%lld, condition \"%s\": %s",
                                                    static_cast<long long>(tid), condition,
                                                    wxString::FromUTF8(cron::ErrorText(e)));
            // The toolkit's default message-box caption.
            if (report->EchoesToStderr()) {
                report->ShowMessage(named, "Message");
            } else {
                std::cerr << "Cadrelle: " << named.utf8_string() << std::endl;
                report->ShowMessage(wxString::FromUTF8(cron::ErrorText(e)), "Message");
            }
        }
    }
}

void CronSchedule::Compute(std::int64_t nowSec)
{
    m_moments = Search(*m_expr, nowSec);
    m_bValid = true;
    m_validFrom = nowSec;
    m_validUntil = m_moments.next1Ms >= 0 ? m_moments.next1Ms / 1000 : StartOfNextLocalYear(nowSec);
}

bool CronSchedule::IsConditionValid(const wxString& condition, unsigned version, std::int64_t tid,
                                    UserMessages& messages)
{
    const bool changed = !m_bParsed || version != m_nVersion;
    if (changed || !m_bCaching) {
        // A malformed condition is reported once, not twenty times a second.
        Parse(condition, changed ? &messages : nullptr, tid);
        m_nVersion = version;
    }
    return m_expr.has_value();
}

CronMoments CronSchedule::MomentsAfter(std::int64_t nowSec)
{
    if (!m_expr)
        return CronMoments();
    if (!m_bValid || nowSec < m_validFrom || nowSec >= m_validUntil)
        Compute(nowSec);
    return m_moments;
}

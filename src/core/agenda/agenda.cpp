#include "core/agenda/agenda.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <queue>

#include "core/cron/cron_expr.h"
#include "core/cron/cron_local_time.h"
#include "core/jobs/job_kinds.h"
#include "core/scheduler.h"
#include "core/triggers/trigger_description.h"
#include "core/triggers/trigger_time.h"

namespace {

bool IsPowerJob(std::uint32_t type)
{
    return type == NJobTypeSuspend || type == NJobTypeHibernates || type == NJobTypeShutdown ||
           type == NJobTypeReboot;
}

bool IsSessionJob(std::uint32_t type)
{
    return type == NJobTypeLockWorkstation || type == NJobTypeLogoff;
}

// The smallest whole second s with s * 1000 >= ms.
std::int64_t CeilSeconds(std::int64_t ms)
{
    return -FloorSeconds(-ms);
}

// A change of the UTC offset: at `atSec` the offset goes from `before` to
// `after` (seconds).
struct OffsetChange {
    std::int64_t atSec;
    long long before;
    long long after;
};

// The offset changes between the two moments, found hour by hour (zones do
// not change twice within an hour) and then to the second.
std::vector<OffsetChange> OffsetChanges(std::int64_t fromSec, std::int64_t untilSec)
{
    std::vector<OffsetChange> changes;
    long long prevOffset = 0;
    if (!cron::OffsetAt(static_cast<std::time_t>(fromSec), prevOffset))
        return changes;
    for (std::int64_t t = fromSec; t < untilSec; t += 3600) {
        const std::int64_t next = std::min(t + 3600, untilSec);
        long long offset = 0;
        if (!cron::OffsetAt(static_cast<std::time_t>(next), offset))
            break;
        if (offset != prevOffset) {
            std::int64_t lo = t, hi = next;  // offset(lo) == prevOffset, offset(hi) == offset
            while (hi - lo > 1) {
                const std::int64_t mid = lo + (hi - lo) / 2;
                long long m = 0;
                cron::OffsetAt(static_cast<std::time_t>(mid), m);
                (m == prevOffset ? lo : hi) = mid;
            }
            changes.push_back({hi, prevOffset, offset});
        }
        prevOffset = offset;
    }
    return changes;
}

// The first wall time in [fromCivil, untilCivil) (civil seconds: the wall
// time read as if it were UTC) that the expression asks for.
std::optional<std::int64_t> FirstCivilMatch(const CronExpr& expr, std::int64_t fromCivil, std::int64_t untilCivil)
{
    for (std::int64_t minute = fromCivil - ((fromCivil % 60) + 60) % 60; minute < untilCivil; minute += 60) {
        const cron::CivilTime c = cron::CivilFromSeconds(minute);
        const int weekday = cron::WeekdayFromDays(cron::DaysFromCivil(c.year, c.month, c.day));
        if (!expr.months.test(static_cast<std::size_t>(c.month - 1)) ||
            !expr.daysOfMonth.test(static_cast<std::size_t>(c.day - 1)) ||
            !expr.daysOfWeek.test(static_cast<std::size_t>(weekday)) || !expr.hours.test(static_cast<std::size_t>(c.hour)) ||
            !expr.minutes.test(static_cast<std::size_t>(c.minute)))
            continue;
        for (std::int64_t s = std::max(minute, fromCivil); s < std::min(minute + 60, untilCivil); ++s)
            if (expr.seconds.test(static_cast<std::size_t>(s - minute)))
                return s;
    }
    return std::nullopt;
}

struct CronSource {
    std::uint32_t source;
    CronExpr expr;
    std::int64_t firstAfterSec;  // search from here (strictly after)
    std::int64_t lastSec;        // up to and including
};

struct Pending {
    std::int64_t ms;
    std::int64_t tid;  // the order among runs of the same moment: JID, then TID
    std::int32_t jid;
    std::uint32_t source;
    std::int32_t cron;  // index into the cron sources, -1 for a one-shot run
};

}  // namespace

const wxString& Agenda::Sentence(std::uint32_t source) const
{
    auto it = m_sentences.find(source);
    if (it == m_sentences.end()) {
        const AgendaSource& s = sources.at(source);
        it = m_sentences.emplace(source, DescribeTrigger(s.triggerType, s.condition)).first;
    }
    return it->second;
}

AgendaOptions AgendaWindow(std::int64_t nowMs, int days)
{
    AgendaOptions options;
    options.fromMs = nowMs;
    options.untilMs = ToMs(FromMs(nowMs) + wxDateSpan::Days(days));
    return options;
}

Agenda BuildAgenda(const Scheduler& scheduler, const AgendaOptions& options)
{
    Agenda agenda;
    std::vector<CronSource> crons;
    std::vector<Pending> oneShots;
    const std::int64_t fromSec = FloorSeconds(options.fromMs);
    const std::int64_t untilSec = FloorSeconds(options.untilMs);
    {
        // Only the values are copied under the lock; the searches run after.
        const auto lock = scheduler.ReadLock();
        for (const Scheduler::JobPtr& job : scheduler.Jobs()) {
            if (!job->IsEnabled())
                continue;
            for (std::int64_t tid : job->GetTriggerIds()) {
                const Trigger* trigger = scheduler.GetTriggerById(tid);
                if (!trigger || !trigger->IsEnabled())
                    continue;
                const std::uint32_t type = trigger->GetType();
                const std::uint32_t index = static_cast<std::uint32_t>(agenda.sources.size());
                AgendaSource source{job->GetId(), job->GetType(), job->GetDescription(), tid, type,
                                    trigger->GetCondition()};
                if (IsCronDrivenType(type)) {
                    // The engine fires at a match while the active period
                    // (start to end, both included) holds.
                    const std::int64_t startMs = ToMs(trigger->GetStart());
                    const std::int64_t endMs = ToMs(trigger->GetEnd());
                    CronSource cron{index, CronExpr(), std::max(fromSec, CeilSeconds(startMs) - 1),
                                    std::min(untilSec, FloorSeconds(endMs))};
                    if (cron.firstAfterSec >= cron.lastSec)
                        continue;
                    try {
                        cron.expr = ParseCronExpr(source.condition.ToStdString());
                    } catch (const cron::bad_cronexpr&) {
                        continue;  // never fires; the trigger list says "Invalid"
                    }
                    crons.push_back(std::move(cron));
                } else if (type == NTriggerTypeSpecTime || type == NTriggerTypeCountDown ||
                           (type == NTriggerTypeWithStart && options.withStart)) {
                    const wxDateTime next = trigger->GetNextFire();
                    if (trigger->IsFinished() || !next.IsValid())
                        continue;
                    const std::int64_t ms = ToMs(next);
                    if (ms <= options.fromMs || ms > options.untilMs)
                        continue;
                    oneShots.push_back({ms, tid, job->GetId(), index, -1});
                } else {
                    continue;  // Idle Timeout fires by idle time, not by the clock
                }
                agenda.sources.push_back(std::move(source));
            }
        }
    }

    // One ordered walk over all triggers at once (a k-way merge), so the
    // list can stop at maxRuns with exactly the earliest runs in it.
    const auto later = [](const Pending& a, const Pending& b) {
        if (a.ms != b.ms)
            return a.ms > b.ms;
        return a.jid != b.jid ? a.jid > b.jid : a.tid > b.tid;
    };
    std::vector<Pending> heap = oneShots;
    heap.reserve(heap.size() + crons.size());
    for (std::size_t i = 0; i < crons.size(); ++i) {
        const std::time_t next = CronNext(crons[i].expr, static_cast<std::time_t>(crons[i].firstAfterSec));
        if (next != static_cast<std::time_t>(-1) && next <= crons[i].lastSec)
            heap.push_back({static_cast<std::int64_t>(next) * 1000, agenda.sources[crons[i].source].tid,
                            agenda.sources[crons[i].source].jid, crons[i].source, static_cast<std::int32_t>(i)});
    }
    std::make_heap(heap.begin(), heap.end(), later);
    while (!heap.empty()) {
        if (agenda.runs.size() >= options.maxRuns) {
            agenda.truncated = true;
            break;
        }
        std::pop_heap(heap.begin(), heap.end(), later);
        Pending run = heap.back();
        heap.pop_back();
        agenda.runs.push_back({run.ms, run.source, 0, -1});
        if (run.cron >= 0) {
            const CronSource& cron = crons[static_cast<std::size_t>(run.cron)];
            const std::time_t next = CronNext(cron.expr, static_cast<std::time_t>(run.ms / 1000));
            if (next != static_cast<std::time_t>(-1) && next <= cron.lastSec) {
                run.ms = static_cast<std::int64_t>(next) * 1000;
                heap.push_back(run);
                std::push_heap(heap.begin(), heap.end(), later);
            }
        }
    }
    const std::int64_t lastMs = agenda.truncated && !agenda.runs.empty() ? agenda.runs.back().atMs : options.untilMs;

    // Daylight saving: wall times a spring change skips become an entry of
    // their own (the trigger does not run then); runs in an hour an autumn
    // change repeats are marked (they fire once, at the first occurrence).
    const std::vector<OffsetChange> changes = OffsetChanges(fromSec, FloorSeconds(lastMs) + 1);
    std::vector<AgendaRun> skipped;
    for (const OffsetChange& change : changes) {
        if (change.after > change.before) {
            const std::int64_t at = change.atSec;
            for (const CronSource& cron : crons) {
                if (at <= cron.firstAfterSec || at > cron.lastSec)
                    continue;
                if (const auto wall = FirstCivilMatch(cron.expr, at + change.before, at + change.after))
                    skipped.push_back({at * 1000, cron.source, AgendaMarkSkipped, static_cast<int>(*wall % 86400)});
            }
        } else {
            const std::int64_t d = (change.before - change.after) * 1000;
            const std::int64_t at = change.atSec * 1000;
            auto it = std::lower_bound(agenda.runs.begin(), agenda.runs.end(), at - d,
                                       [](const AgendaRun& r, std::int64_t ms) { return r.atMs < ms; });
            for (; it != agenda.runs.end() && it->atMs < at + d; ++it)
                it->marks |= AgendaMarkRepeated;
        }
    }
    if (!skipped.empty()) {
        std::sort(skipped.begin(), skipped.end(), [&agenda](const AgendaRun& a, const AgendaRun& b) {
            return a.atMs != b.atMs ? a.atMs < b.atMs : agenda.sources[a.source].jid < agenda.sources[b.source].jid;
        });
        const std::size_t middle = agenda.runs.size();
        agenda.runs.insert(agenda.runs.end(), skipped.begin(), skipped.end());
        std::inplace_merge(agenda.runs.begin(), agenda.runs.begin() + static_cast<std::ptrdiff_t>(middle),
                           agenda.runs.end(),
                           [&agenda](const AgendaRun& a, const AgendaRun& b) {
                               return a.atMs != b.atMs ? a.atMs < b.atMs
                                                       : agenda.sources[a.source].jid < agenda.sources[b.source].jid;
                           });
    }

    // Power and session jobs are marked; two power runs close together both.
    std::size_t lastPower = agenda.runs.size();  // none yet
    for (std::size_t i = 0; i < agenda.runs.size(); ++i) {
        AgendaRun& run = agenda.runs[i];
        const std::uint32_t type = agenda.sources[run.source].jobType;
        if (IsSessionJob(type))
            run.marks |= AgendaMarkSession;
        if (!IsPowerJob(type))
            continue;
        run.marks |= AgendaMarkPower;
        if (run.marks & AgendaMarkSkipped)
            continue;
        if (lastPower < agenda.runs.size() && run.atMs - agenda.runs[lastPower].atMs <= kAgendaPowerCloseMs) {
            agenda.runs[lastPower].marks |= AgendaMarkPowerClose;
            run.marks |= AgendaMarkPowerClose;
        }
        lastPower = i;
    }
    return agenda;
}

wxString AgendaMarkText(unsigned marks)
{
    wxString text;
    const auto add = [&text](const wxString& word) { text += (text.empty() ? "" : ", ") + word; };
    if (marks & AgendaMarkPower)
        add(_("power"));
    if (marks & AgendaMarkSession)
        add(_("session"));
    if (marks & AgendaMarkPowerClose)
        add(_("another power job within 10 minutes"));
    if (marks & AgendaMarkRepeated)
        add(_("hour repeated by the clock change: runs once"));
    if (marks & AgendaMarkSkipped)
        add(_("hour skipped by the clock change: does not run"));
    return text;
}

wxString AgendaDayTitle(std::int64_t ms)
{
    // The C library's names follow the locale, which the program does not
    // set; the catalogue's do.
    static const char* const kWeekdays[] = {wxTRANSLATE("Sunday"),   wxTRANSLATE("Monday"), wxTRANSLATE("Tuesday"),
                                            wxTRANSLATE("Wednesday"), wxTRANSLATE("Thursday"), wxTRANSLATE("Friday"),
                                            wxTRANSLATE("Saturday")};
    const wxDateTime day = FromMs(ms);
    return day.Format("%Y-%m-%d ") + wxGetTranslation(kWeekdays[day.GetWeekDay()]);
}

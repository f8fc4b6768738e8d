#pragma once
// The next two moments of a trigger's cron CONDITION, as the recurring kinds
// need them on every check.
//
// Computing them means a parse and two searches: several microseconds, twenty
// times a second for every recurring trigger. The answer only changes when
// the CONDITION changes or the clock leaves the span in which it holds, so it
// is kept: "the first match strictly after t" is the same for every t from
// the second it was computed at up to (not including) that match, and
// "no match" holds until the year of t changes (the search looks 400 years,
// the calendar's whole cycle, ahead of the year it starts in, so a later
// start in the same year sees a subset of the same years; in practice "no
// match" is for ever, but a yearly recomputation costs nothing worth
// saving). A clock that jumps backwards falls before
// the span and recomputes.

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

#include <wx/string.h>

#include "core/cron/cron_expr.h"

class UserMessages;

struct CronMoments {
    std::int64_t next1Ms = -1;  // first match strictly after now; -1 for none
    std::int64_t next2Ms = -1;  // first match strictly after next1; -1 for none
};

class CronSchedule {
public:
    // Whether `condition` parses; `version` tells whether the condition
    // changed since the last call, and only then is it parsed again. A
    // malformed condition is reported once per version (log, a message box
    // through `messages`, and stderr).
    bool IsConditionValid(const wxString& condition, unsigned version, std::int64_t tid, UserMessages& messages);
    // The moments after `nowSec` for the condition IsConditionValid last
    // took. A malformed one has none: the trigger never fires until its
    // condition is corrected.
    CronMoments MomentsAfter(std::int64_t nowSec);
    // What the last MomentsAfter answered.
    const CronMoments& LastMoments() const { return m_moments; }

    // Always recompute (the straightforward rule): for the equivalence test
    // and the benchmark that compares the two.
    void SetCaching(bool caching) { m_bCaching = caching; }

private:
    void Parse(const wxString& condition, UserMessages* report, std::int64_t tid);
    void Compute(std::int64_t nowSec);

    bool m_bCaching = true;
    bool m_bParsed = false;
    unsigned m_nVersion = 0;
    std::optional<CronExpr> m_expr;
    bool m_bValid = false;        // the span below holds a computed answer
    std::int64_t m_validFrom = 0;  // seconds
    std::int64_t m_validUntil = 0; // seconds, exclusive
    CronMoments m_moments;
};

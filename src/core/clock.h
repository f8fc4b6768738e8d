#pragma once
// The one source of "now" for the core. Nothing in the core reads the wall
// clock directly: each session's context holds a clock, so tests can drive
// triggers through exact milliseconds.

#include <atomic>
#include <climits>
#include <cstdint>

#include <wx/datetime.h>

// Set by a ClockPassScope on this thread; no value otherwise.
constexpr std::int64_t kNoPassTime = INT64_MIN;
inline thread_local std::int64_t t_clockPassTimeMs = kNoPassTime;

class Clock {
public:
    virtual ~Clock() = default;
    // Milliseconds since the Unix epoch: the moment of the current checker
    // pass on a checker thread, the clock's reading everywhere else.
    std::int64_t NowMs() const
    {
        const std::int64_t pass = t_clockPassTimeMs;
        return pass != kNoPassTime ? pass : ReadMs();
    }
    wxDateTime Now() const { return wxDateTime(wxLongLong(NowMs())); }
    // The clock's own reading.
    virtual std::int64_t ReadMs() const = 0;
};

class SystemClock final : public Clock {
public:
    std::int64_t ReadMs() const override;
};

// A clock that only moves when told to; safe to read from any thread.
class ManualClock final : public Clock {
public:
    explicit ManualClock(std::int64_t startMs = 0) : m_nowMs(startMs) {}
    std::int64_t ReadMs() const override { return m_nowMs.load(std::memory_order_relaxed); }
    void Set(std::int64_t ms) { m_nowMs.store(ms, std::memory_order_relaxed); }
    void Set(const wxDateTime& dt) { Set(dt.GetValue().GetValue()); }
    void Advance(std::int64_t ms) { m_nowMs.fetch_add(ms, std::memory_order_relaxed); }

private:
    std::atomic<std::int64_t> m_nowMs;
};

// One reading of the clock for a whole checker pass: the triggers of a pass
// are checked as at one moment, and the clock is read once per pass instead
// of once per trigger (reading it costs more than checking a trigger).
class ClockPassScope {
public:
    explicit ClockPassScope(const Clock& clock) { t_clockPassTimeMs = clock.ReadMs(); }
    ~ClockPassScope() { t_clockPassTimeMs = kNoPassTime; }
    ClockPassScope(const ClockPassScope&) = delete;
    ClockPassScope& operator=(const ClockPassScope&) = delete;
};

// The system clock. Stateless and never destroyed: a job thread left running
// at exit may still read it.
Clock& TheSystemClock();

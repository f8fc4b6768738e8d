#pragma once
// The one source of "now" for the core. Nothing in the core reads the wall
// clock directly, so tests can drive triggers through exact milliseconds.

#include <atomic>
#include <cstdint>

#include <wx/datetime.h>

class Clock {
public:
    virtual ~Clock() = default;
    // Milliseconds since the Unix epoch.
    virtual std::int64_t NowMs() const = 0;
    wxDateTime Now() const { return wxDateTime(wxLongLong(NowMs())); }
};

class SystemClock final : public Clock {
public:
    std::int64_t NowMs() const override;
};

// A clock that only moves when told to; safe to read from any thread.
class ManualClock final : public Clock {
public:
    explicit ManualClock(std::int64_t startMs = 0) : m_nowMs(startMs) {}
    std::int64_t NowMs() const override { return m_nowMs.load(std::memory_order_relaxed); }
    void Set(std::int64_t ms) { m_nowMs.store(ms, std::memory_order_relaxed); }
    void Set(const wxDateTime& dt) { Set(dt.GetValue().GetValue()); }
    void Advance(std::int64_t ms) { m_nowMs.fetch_add(ms, std::memory_order_relaxed); }

private:
    std::atomic<std::int64_t> m_nowMs;
};

// The process-wide clock; the system clock unless a test installed another.
Clock& GetClock();
// Installs `clock` (not owned) as the process-wide clock; nullptr restores the
// system clock.
void SetClock(Clock* clock);

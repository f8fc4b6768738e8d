#pragma once
// Millisecond arithmetic for the trigger checks, which run twenty times a
// second per trigger and must not convert to calendar fields on the way.

#include <atomic>
#include <climits>
#include <cstdint>

#include <wx/datetime.h>

inline std::int64_t ToMs(const wxDateTime& dt)
{
    return dt.GetValue().GetValue();
}

inline wxDateTime FromMs(std::int64_t ms)
{
    return wxDateTime(wxLongLong(ms));
}

// Whole seconds, rounded down (also before 1970).
inline std::int64_t FloorSeconds(std::int64_t ms)
{
    return ms >= 0 ? ms / 1000 : -((-ms + 999) / 1000);
}

// A moment that a checker thread writes while other threads read it (the
// views, the delayed save): one atomic 64-bit value, so a reader never sees
// half of an update. An invalid moment is kept as the smallest value.
class AtomicMoment {
public:
    static constexpr std::int64_t kInvalid = INT64_MIN;

    AtomicMoment() = default;
    AtomicMoment(const wxDateTime& dt) : m_ms(dt.IsValid() ? ToMs(dt) : kInvalid) {}
    AtomicMoment(const AtomicMoment& other) : m_ms(other.Ms()) {}
    AtomicMoment& operator=(const AtomicMoment& other)
    {
        SetMs(other.Ms());
        return *this;
    }
    AtomicMoment& operator=(const wxDateTime& dt)
    {
        SetMs(dt.IsValid() ? ToMs(dt) : kInvalid);
        return *this;
    }
    operator wxDateTime() const { return Get(); }

    wxDateTime Get() const
    {
        const std::int64_t ms = Ms();
        return ms == kInvalid ? wxDateTime() : FromMs(ms);
    }
    std::int64_t Ms() const { return m_ms.load(std::memory_order_relaxed); }
    void SetMs(std::int64_t ms)
    {
        if (m_ms.load(std::memory_order_relaxed) != ms)
            m_ms.store(ms, std::memory_order_relaxed);
    }
    bool IsValid() const { return Ms() != kInvalid; }

private:
    std::atomic<std::int64_t> m_ms{kInvalid};
};

// Local-time bounds of the year 1999, computed once: "PREVFIRE in 1999"
// means never fired, and a recorded NEXTFIRE counts only after 1999.
std::int64_t StartOf1999Ms();
std::int64_t StartOf2000Ms();

inline bool IsInYear1999(const wxDateTime& dt)
{
    const std::int64_t ms = ToMs(dt);
    return dt.IsValid() && ms >= StartOf1999Ms() && ms < StartOf2000Ms();
}

inline bool IsAfter1999(const wxDateTime& dt)
{
    return dt.IsValid() && ToMs(dt) >= StartOf2000Ms();
}

// The window in which a moment fires: from 200 ms before it up to it.
constexpr std::int64_t kFireWindowMs = 200;
// A recurring trigger never fires twice within this distance of its last firing.
constexpr std::int64_t kDoubleFireGuardMs = 250;

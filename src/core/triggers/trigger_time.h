#pragma once
// Millisecond arithmetic for the trigger checks, which run twenty times a
// second per trigger and must not convert to calendar fields on the way.

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

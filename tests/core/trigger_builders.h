#pragma once
// A trigger loaded from the texts of a data-file record, as the loader makes
// it (at the core clock's current time).

#include <memory>

#include "core/triggers/trigger.h"

std::unique_ptr<Trigger> LoadedTrigger(std::int64_t tid, std::uint32_t type, const wxString& condition,
                                       const wxString& prevFire = "0 0 0 1 1 * 1999",
                                       const wxString& nextFire = "0 0 0 1 1 * 1999",
                                       const wxString& start = "0 0 0 1 1 * 1999",
                                       const wxString& end = "59 59 23 31 12 * 2999");

// An Interval trigger that fires at every second.
inline std::unique_ptr<Trigger> EverySecondTrigger(std::int64_t tid)
{
    return LoadedTrigger(tid, NTriggerTypeInterval, "* * * * * ?");
}

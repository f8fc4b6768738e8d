#pragma once
// How many checker threads share the triggers, by the number of triggers.
// The steps are unequal on purpose and kept exactly.

#include <cstddef>
#include <cstdint>

struct CheckerPlan {
    std::size_t threadCount;     // nThreadCnt
    std::size_t checkTriggerCnt; // nCheckTriggerCnt
};

CheckerPlan ChooseCheckerPlan(std::size_t totalTriggers);

// Silent mode suppresses these kinds (a bit set over kinds 0..15: Reminder,
// Open URL, Open File, Exec DOS Command, Exec Script File, Send Key, Key
// Typing, Mouse Click); kinds above 15 always run.
constexpr std::uint32_t kSilentModeSuppressedKinds = 0xE067;
inline bool IsSuppressedInSilentMode(std::uint32_t kind)
{
    return kind < 16 && (kSilentModeSuppressedKinds >> kind) & 1u;
}

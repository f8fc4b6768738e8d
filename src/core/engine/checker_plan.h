#pragma once
// How many checker threads share the triggers, by the number of triggers.
// The steps are unequal on purpose and kept exactly.

#include <cstddef>

struct CheckerPlan {
    std::size_t threadCount;     // nThreadCnt
    std::size_t checkTriggerCnt; // nCheckTriggerCnt
};

CheckerPlan ChooseCheckerPlan(std::size_t totalTriggers);

#include "core/engine/checker_plan.h"

CheckerPlan ChooseCheckerPlan(std::size_t totalTriggers)
{
    if (totalTriggers < 16)
        return {4, 4};
    if (totalTriggers < 32)
        return {8, 4};
    if (totalTriggers < 64)
        return {8, 8};
    if (totalTriggers < 128)
        return {16, 8};
    return {16, 16};
}

// libFuzzer target for the cron parser and search. Build with
// -DCADRELLE_FUZZ=ON and clang; see docs/CRON.md for the command.

#include <cstdio>
#include <cstdlib>

#include "cron_fuzz_check.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // A zone with daylight saving, so the gap and fold paths are reached.
    setenv("TZ", "Europe/Berlin", 0);
    tzset();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 512) return 0;  // long inputs only repeat what short ones reach
    const std::string problem = cron_check::Problem(data, size);
    if (!problem.empty()) {
        std::fprintf(stderr, "cron check failed: %s\n", problem.c_str());
        std::abort();
    }
    return 0;
}

// Replays the fuzz corpus (seeds and past crashers) through the fuzz
// target's checks, without libFuzzer.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "cron_fuzz_check.h"

namespace {

TEST(CronCorpus, EveryFilePassesTheFuzzChecks) {
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(CADRELLE_CRON_CORPUS_DIR)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string data((std::istreambuf_iterator<char>(in)), {});
        SCOPED_TRACE(entry.path().filename().string() + ": " + data);
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(data.data());
        EXPECT_EQ(cron_check::Problem(bytes, data.size()), "");
        ++files;
    }
    EXPECT_GT(files, 10);
}

}  // namespace

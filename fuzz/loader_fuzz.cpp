// libFuzzer target for the data file reader. Build with -DCADRELLE_FUZZ=ON and
// clang; docs/PERFORMANCE.md has the command and the corpus it keeps.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <wx/init.h>
#include <wx/log.h>

#include "core/data/data_file_reader.h"
#include "core/session/session_context.h"
#include "core/user_messages.h"

namespace {

// Conditions that do not parse are told to the user; here nobody is listening.
class Silent final : public UserMessages {
public:
    void ShowMessage(const wxString&, const wxString&) override {}
};

SessionContext& FuzzContext()
{
    static SessionContext context;
    return context;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    setenv("TZ", "Europe/Berlin", 0);
    wxInitialize();
    // Triggers log the conditions they cannot read; that is not news here.
    wxLog::EnableLogging(false);
    static Silent silent;
    FuzzContext().SetMessages(&silent);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    DataFileContent content;
    ReadDataFileBytes(reinterpret_cast<const char*>(data), size, content, FuzzContext());
    // A file that is not usable gives nothing at all, and says why.
    const bool usable = content.wellFormed && content.schedulerRoot;
    if (!usable && (!content.jobs.empty() || !content.triggers.empty() || content.problem.empty())) {
        std::fprintf(stderr, "unusable file produced jobs or triggers, or no reason\n");
        std::abort();
    }
    // Whatever was left out or refused is accounted for in words.
    if (content.skippedJobs + content.skippedTriggers > content.dropped.size() || content.refused > content.dropped.size()) {
        std::fprintf(stderr, "something was dropped without a word\n");
        std::abort();
    }
    return 0;
}

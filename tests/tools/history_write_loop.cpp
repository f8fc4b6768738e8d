// A child process for the history crash test: records numbered runs into
// APPDIR/history.db as fast as it can until it is killed. Run n has JID n
// and starts at the moment it was recorded. With a rate and a duration (the
// sustained-load script), records PER_MINUTE runs a minute for SECONDS,
// closes the history and prints how many runs it recorded.
//   history_write_loop APPDIR [PER_MINUTE SECONDS]

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include <wx/init.h>

#include "core/history/run_history.h"
#include "core/session/session_context.h"

int main(int argc, char** argv)
{
    if (argc < 2)
        return 2;
    wxInitializer init;
    SessionContext context;
    RunHistory history(context, wxString::FromUTF8(argv[1]) + "/history.db");
    if (!history.Start())
        return 1;
    const long perMinute = argc > 3 ? std::atol(argv[2]) : 0;
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(argc > 3 ? std::atol(argv[3]) : 0);
    auto next = std::chrono::steady_clock::now();
    for (std::int32_t n = 0;; ++n) {
        if (perMinute > 0) {
            if (std::chrono::steady_clock::now() >= until) {
                history.Stop();
                std::printf("%d\n", n);
                return 0;
            }
            next += std::chrono::microseconds(60000000 / perMinute);
            std::this_thread::sleep_until(next);
        }
        RunRecord run;
        run.jid = n;
        run.startMs = run.endMs = run.dueMs = context.GetClock().NowMs();
        run.description = "a run with a description of a usual length";
        run.details = "copied 12 files (34567 bytes)";
        history.Record(std::move(run));
        if (n % 50 == 0)
            std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
}

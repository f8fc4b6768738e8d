// A child process for the history crash test: records numbered runs into
// APPDIR/history.db as fast as it can until it is killed. Run n has JID n
// and starts at the moment it was recorded.
//   history_write_loop APPDIR

#include <chrono>
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
    for (std::int32_t n = 0;; ++n) {
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

// The real program, ended the two ways a desktop ends it: the window
// manager's close request (_NET_CLOSE_WINDOW) and SIGTERM. Either way it
// saves, writes the end banner and exits with status 0, losing no job.

#include <csignal>
#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "core/log/weekday_log.h"
#include "frame_test_data.h"
#include "gui_test_support.h"

namespace {

// Asks the window manager, as a pager does (_NET_CLOSE_WINDOW), to close the
// managed window of `pid`; false while it has none.
bool RequestClose(pid_t pid)
{
    const std::string script = R"(
import sys
from Xlib import display, X, protocol
d = display.Display(); root = d.screen().root; atom = d.intern_atom
clients = root.get_full_property(atom("_NET_CLIENT_LIST"), X.AnyPropertyType)
for w in (clients.value if clients else []):
    w = d.create_resource_object("window", w); p = w.get_full_property(atom("_NET_WM_PID"), X.AnyPropertyType)
    if p and p.value[0] == int(sys.argv[1]):
        root.send_event(protocol.event.ClientMessage(window=w, client_type=atom("_NET_CLOSE_WINDOW"),
                        data=(32, [0, 2, 0, 0, 0])), event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        d.flush(); sys.exit(0)
sys.exit(1))";
    return std::system(("/usr/bin/python3 -c '" + script + "' " + std::to_string(pid)).c_str()) == 0;
}

class ProgramEndTest : public testing::TestWithParam<bool> {};

TEST_P(ProgramEndTest, SavesAndWritesTheEndBanner)
{
    const bool bySignal = GetParam();
    const wxString appDir = guitest::FreshAppDir();
    frametest::WriteExampleData(appDir);
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        const wxScopedCharBuffer dir = appDir.utf8_str();
        // Preferences of its own: the in-process tests change the shared ones.
        ::setenv("XDG_CONFIG_HOME", (std::string(dir.data()) + "/config").c_str(), 1);
        ::execl(CADRELLE_BINARY, CADRELLE_BINARY, "--app-dir", dir.data(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    // Past the first tick of the trigger timer: the checkers run.
    EXPECT_TRUE(guitest::WaitFor(
        [&] { return guitest::LogText(appDir).Contains("Starting CheckTriggerFireThreadEx"); }, 20000));
    if (bySignal)
        ::kill(pid, SIGTERM);
    else
        EXPECT_TRUE(guitest::WaitFor([&] { return RequestClose(pid); }, 20000));
    int status = -1;
    const bool ended = guitest::WaitFor([&] { return ::waitpid(pid, &status, WNOHANG) == pid; }, 20000);
    if (!ended) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, &status, 0);
    }
    ASSERT_TRUE(ended);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    const wxString log = guitest::LogText(appDir);
    EXPECT_TRUE(log.Contains(bySignal ? "OnStopSignal - 15" : "CadrelleFrame::OnClose"));
    EXPECT_LT(log.Find("SaveSchedulerData(true) Completed"), log.Find(WeekdayLog::kEndBanner));
    EXPECT_EQ(guitest::ReadText(appDir + "/data/data1.xml").Replace("<JOB>", ""), 5u);
}

INSTANTIATE_TEST_SUITE_P(Ways, ProgramEndTest, testing::Values(false, true),
                         [](const testing::TestParamInfo<bool>& info) {
                             return info.param ? "Sigterm" : "WindowManagerClose";
                         });

}  // namespace

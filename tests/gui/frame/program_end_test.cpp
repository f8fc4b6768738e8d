// The real program, ended the two ways a desktop ends it: the window
// manager's close request (_NET_CLOSE_WINDOW) and SIGTERM. Either way it
// saves, writes the end banner and exits with status 0, losing no job.

#include <csignal>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "core/log/weekday_log.h"
#include "frame_test_data.h"
#include "gui_test_support.h"

// Last: Xlib's macros (None, Status, Bool) would break the headers above.
#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace {

// The top-level client window of process `pid` in _NET_CLIENT_LIST, or 0.
Window ClientOf(Display* display, pid_t pid)
{
    const Atom clientList = XInternAtom(display, "_NET_CLIENT_LIST", False);
    const Atom wmPid = XInternAtom(display, "_NET_WM_PID", False);
    Atom type;
    int format;
    unsigned long count = 0, after;
    unsigned char* data = nullptr;
    Window found = 0;
    if (XGetWindowProperty(display, DefaultRootWindow(display), clientList, 0, 4096, False, XA_WINDOW, &type, &format,
                           &count, &after, &data) != Success || !data)
        return 0;
    for (unsigned long i = 0; i < count && !found; ++i) {
        const Window window = reinterpret_cast<Window*>(data)[i];
        unsigned char* pidData = nullptr;
        unsigned long n = 0;
        if (XGetWindowProperty(display, window, wmPid, 0, 1, False, XA_CARDINAL, &type, &format, &n, &after,
                               &pidData) == Success && pidData) {
            if (n == 1 && static_cast<pid_t>(*reinterpret_cast<unsigned long*>(pidData)) == pid)
                found = window;
            XFree(pidData);
        }
    }
    XFree(data);
    return found;
}

// What a pager or taskbar sends to ask the window manager to close a window.
void RequestClose(Display* display, Window window)
{
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, "_NET_CLOSE_WINDOW", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = CurrentTime;
    event.xclient.data.l[1] = 2;  // from a pager
    XSendEvent(display, DefaultRootWindow(display), False, SubstructureRedirectMask | SubstructureNotifyMask,
               &event);
    XFlush(display);
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
    Display* display = XOpenDisplay(nullptr);
    ASSERT_TRUE(display);
    Window window = 0;
    EXPECT_TRUE(guitest::WaitFor([&] { return (window = ClientOf(display, pid)) != 0; }, 20000));
    // Past the first tick of the trigger timer: the checkers run.
    EXPECT_TRUE(guitest::WaitFor(
        [&] { return guitest::LogText(appDir).Contains("Starting CheckTriggerFireThreadEx"); }, 20000));
    if (bySignal)
        ::kill(pid, SIGTERM);
    else if (window)
        RequestClose(display, window);
    int status = -1;
    const bool ended = guitest::WaitFor([&] { return ::waitpid(pid, &status, WNOHANG) == pid; }, 20000);
    if (!ended) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, &status, 0);
    }
    XCloseDisplay(display);
    ASSERT_TRUE(ended);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    const wxString log = guitest::LogText(appDir);
    EXPECT_TRUE(log.Contains(bySignal ? "OnStopSignal - 15" : "CadrelleFrame::OnClose"));
    EXPECT_LT(log.Find("SaveSchedulerData(true) Completed"), log.Find(WeekdayLog::kEndBanner));
    EXPECT_EQ(guitest::Count(guitest::ReadText(appDir + "/data/data1.xml"), "<JOB>"), 5u);
}

INSTANTIATE_TEST_SUITE_P(Ways, ProgramEndTest, testing::Values(false, true),
                         [](const testing::TestParamInfo<bool>& info) {
                             return info.param ? "Sigterm" : "WindowManagerClose";
                         });

}  // namespace

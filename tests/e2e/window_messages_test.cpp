// The window as a user sees it on a private X server: a job's message
// reaches the screen as a window of the program, shown by the main thread.

#include <chrono>
#include <csignal>
#include <cstdio>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <wx/dir.h>
#include <wx/filename.h>

#include "headless_process.h"
#include "xvfb_server.h"
#include "../core/test_support.h"

namespace {

// A reminder marked important, every two seconds, and a Wake-on-LAN job
// whose MAC address is wrong, every two seconds: both must reach the user.
const char* const kJobs =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<SCHEDULER>\n"
    " <JOB><ID>0</ID><TYPE>0</TYPE><DESC>Tea</DESC><ENABLE>1</ENABLE><JINTERVAL>0</JINTERVAL>"
    "<TID>1</TID><JID></JID><INFO>Tea time $ 1</INFO></JOB>\n"
    " <JOB><ID>1</ID><TYPE>12</TYPE><DESC>Wake</DESC><ENABLE>1</ENABLE><JINTERVAL>0</JINTERVAL>"
    "<TID>2</TID><JID></JID><INFO>aa:bb:cc:dd:ee:ff $ 9</INFO></JOB>\n"
    " <TRIGGER><ID>1</ID><TYPE>2</TYPE><CONDITION>0/2 * * * * ?</CONDITION>"
    "<PREVFIRE>0 0 0 1 1 * 1999</PREVFIRE><NEXTFIRE>0 0 0 1 1 * 1999</NEXTFIRE>"
    "<START>0 0 0 1 1 * 1999</START><END>59 59 23 31 12 * 2999</END></TRIGGER>\n"
    " <TRIGGER><ID>2</ID><TYPE>2</TYPE><CONDITION>1/2 * * * * ?</CONDITION>"
    "<PREVFIRE>0 0 0 1 1 * 1999</PREVFIRE><NEXTFIRE>0 0 0 1 1 * 1999</NEXTFIRE>"
    "<START>0 0 0 1 1 * 1999</START><END>59 59 23 31 12 * 2999</END></TRIGGER>\n"
    "</SCHEDULER>\n";

std::string Path(const wxString& path)
{
    return std::string(path.utf8_str());
}

// The first line xdotool prints, or "" when it finds nothing.
std::string FirstLine(const std::string& command)
{
    std::string line;
    if (FILE* pipe = ::popen(command.c_str(), "r")) {
        char buffer[256];
        if (std::fgets(buffer, sizeof buffer, pipe))
            line = buffer;
        ::pclose(pipe);
    }
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
        line.pop_back();
    return line;
}

// Waits for a window whose whole title is `title`; returns its id or "".
std::string WaitForWindow(const std::string& display, const std::string& title, int limitMs)
{
    const std::string command =
        "DISPLAY=" + display + " xdotool search --onlyvisible --name '^" + title + "$' 2>/dev/null";
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
    while (std::chrono::steady_clock::now() < end) {
        const std::string id = FirstLine(command);
        if (!id.empty())
            return id;
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
    return "";
}


}  // namespace

TEST(WindowMessages, ReminderAndJobErrorReachTheScreen)
{
    XvfbServer server;
    ASSERT_TRUE(server.IsRunning());
    TempDir dir;
    WriteFileBytes(dir.File("app/data/data1.xml"), kJobs);
    wxFileName::Mkdir(dir.File("home"), 0700, wxPATH_MKDIR_FULL);
    HeadlessProcess program(Path(dir.File("app")), Path(dir.File("home")));
    program.SetEnvironment({{"DISPLAY", server.Display()}});
    ASSERT_TRUE(program.StartWindow());

    EXPECT_NE(WaitForWindow(server.Display(), "Cadrelle", 15000), "") << program.Output();
    EXPECT_NE(WaitForWindow(server.Display(), "Cadrelle - Reminder", 15000), "") << program.Output();
    // The message box of the bad MAC address, captioned with the program's
    // name like the main window: two windows of that title now.
    const std::string both = "DISPLAY=" + server.Display() +
                             " xdotool search --onlyvisible --name '^Cadrelle$' 2>/dev/null | wc -l";
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < end && std::stoi("0" + FirstLine(both)) < 2)
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_GE(std::stoi("0" + FirstLine(both)), 2);

    // The log reaches its file within a second or two of the job.
    std::string log;
    const auto logEnd = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    do {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        log = LogText(Path(dir.File("app")));
    } while (std::chrono::steady_clock::now() < logEnd && log.find("Address size is") == std::string::npos);
    program.Stop(SIGKILL);
    EXPECT_NE(log.find("### [JID_0] Reminder (important): Tea time"), std::string::npos) << log;
    EXPECT_NE(log.find("### [Cadrelle] Mac Address is not correct, Address size is 1"), std::string::npos) << log;
}

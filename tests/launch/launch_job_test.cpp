// The launch kinds against recorder handlers: the default applications are
// recorder .desktop entries, the terminal is a recorder that really runs what
// it is given, scripts leave marker files. Every effect is awaited with a
// deadline.

#include <filesystem>
#include <future>
#include <optional>
#include <set>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/jobs/job_actions.h"
#include "desktop/jobs/launch_jobs.h"
#include "launch_test_support.h"

namespace fs = std::filesystem;
using namespace launch_test;

namespace {

std::vector<std::string> Tail(const std::vector<std::string>& call)
{
    return std::vector<std::string>(call.begin() + 1, call.end());
}

class LaunchJobTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        RegisterLaunchJobActions();
        SetSettings(&settings);
        ClearRecordedCalls();
        fs::remove_all(GetSession().work);
        fs::create_directories(GetSession().work);
        ASSERT_EQ(::mkfifo(Work("keyboard").c_str(), 0600), 0);
        ::unsetenv("TERMINAL");
    }

    void TearDown() override
    {
        // A terminal recorder still waiting for Enter must end with the test.
        const int keyboard = ::open(Work("keyboard").c_str(), O_RDWR | O_NONBLOCK);
        if (keyboard >= 0) {
            (void)!::write(keyboard, "\n\n\n\n", 4);
            ::close(keyboard);
        }
        EXPECT_EQ(StrayChildren(), std::vector<std::string>()) << "a launch left a child behind";
        SetSettings(nullptr);
        ::unsetenv("TERMINAL");
        ClearJobActions();
    }

    static std::string Work(const std::string& name) { return GetSession().work + "/" + name; }


    RecordedMessages messages;
    CapturedLog log;
    ChosenSettings settings;
};

TEST_F(LaunchJobTest, DefaultApplicationsReceiveExactlyTheTarget)
{
    const std::string textFile = Work("notes with blanks ü.txt");
    WriteText(textFile, "some text\n");
    const std::string folder = Work("a folder ✓");
    fs::create_directory(folder);
    struct Case {
        std::uint32_t kind;
        std::string target;
        std::vector<std::string> expected;
    } cases[] = {
        {NJobTypeOpenUrl, "https://example.test/a%20b?q=1&r=ü", {"browser", "https://example.test/a%20b?q=1&r=ü"}},
        // No scheme: the web, as on Windows.
        {NJobTypeOpenUrl, "www.example.test/page", {"browser", "http://www.example.test/page"}},
        {NJobTypeOpenUrl, "file://" + textFile, {"files", textFile}},
        {NJobTypeOpenFile, textFile, {"files", textFile}},
        {NJobTypeOpenFolder, folder, {"files", folder}},
        // A folder given to Open File opens in the file manager too.
        {NJobTypeOpenFile, folder, {"files", folder}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.target);
        ClearRecordedCalls();
        RunJob(c.kind, {wxString::FromUTF8(c.target)});
        const auto calls = WaitForCalls(1);
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(Tail(calls[0]), c.expected);
    }
    EXPECT_TRUE(messages.Boxes().empty());
    EXPECT_EQ(log.Matching("Started Test Browser").size(), 2u);
}

// What the session lacks is told in a box; a wrong target only in the log.
TEST_F(LaunchJobTest, WhatCannotRunIsRefusedClearly)
{
    const std::string blob = Work("data.cdrlunknown");
    const std::string missing = Work("no such file.txt");
    const std::string unknown = Work("notes.xyz");
    const std::string batch = Work("old.bat");
    const std::string noInterpreter = Work("tool");
    WriteText(blob, std::string("\x00\x01\x02\xff", 4));
    WriteText(unknown, "echo never > \"$WORK/ran\"\n", true);
    WriteText(batch, "@echo off\r\n");
    WriteText(noInterpreter, "#!/usr/bin/env cadrelle-no-such-interpreter\n", true);
    const std::string runScript = "Exec Script File could not run:\n";
    const struct {
        std::uint32_t kind;
        std::string target;  // "-": no parameter at all
        const char* variable;
        const char* value;  // nullptr: unset
        std::string box;    // "": logged, no box
        std::string line;
    } cases[] = {
        {NJobTypeOpenFile, blob, nullptr, nullptr,
         "Open File could not run:\nno application is set to open files of type \"application/octet-stream\"", ""},
        {NJobTypeOpenUrl, "gopher://example.test/", nullptr, nullptr,
         "Open URL could not run:\nno default application is set for \"gopher\" links",
         "Failed to open URL \"gopher://example.test/\" in default browser. no default"},
        {NJobTypeOpenFolder, GetSession().work, "DISPLAY", nullptr,
         "Open Folder could not run:\nno graphical display: DISPLAY is not set", ""},
        {NJobTypeOpenUrl, "https://example.test/", "DISPLAY", ":999",
         "Open URL could not run:\nno graphical display: cannot connect to the X display \":999\"", ""},
        {NJobTypeExecDosCommand, "ls", "PATH", "/nonexistent",
         "Exec DOS Command could not run:\nno terminal emulator was found: set TERMINAL, or install one "
         "(for example xterm)", ""},
        {NJobTypeExecScriptFile, unknown, nullptr, nullptr,
         runScript + "no interpreter is known for \"" + unknown +
             "\": it has no #! line and its extension \".xyz\" is not one of those the scheduler knows", ""},
        {NJobTypeExecScriptFile, batch, nullptr, nullptr,
         runScript + "\"" + batch + "\" is a Windows script (.bat); it cannot run on Linux", ""},
        {NJobTypeExecScriptFile, noInterpreter, nullptr, nullptr,
         runScript + "the interpreter \"cadrelle-no-such-interpreter\" named in the #! line of \"" + noInterpreter +
             "\" is not installed", ""},
        {NJobTypeOpenFile, missing, nullptr, nullptr, "", "[JID_12] Cannot open \"" + missing + "\":"},
        {NJobTypeExecScriptFile, Work("missing.sh"), nullptr, nullptr, "",
         "missing.sh\" cannot be read: No such file or directory"},
        {NJobTypeOpenUrl, "-", nullptr, nullptr, "", "[JID_12] Nothing to do: the URL is empty"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.target);
        const std::size_t boxes = messages.Boxes().size();
        {
            std::optional<ScopedEnv> env;
            if (c.variable)
                env.emplace(c.variable, c.value);
            RunJob(c.kind, c.target == "-" ? ParamList{} : ParamList{wxString::FromUTF8(c.target)}, 12);
        }
        const std::vector<std::string> shown = messages.Boxes();
        EXPECT_EQ(std::vector<std::string>(shown.begin() + static_cast<long>(boxes), shown.end()),
                  c.box.empty() ? std::vector<std::string>{} : std::vector<std::string>{c.box});
        if (!c.line.empty()) {
            EXPECT_EQ(log.Matching(wxString::FromUTF8(c.line)).size(), 1u);
        }
    }
    for (const RecordedMessage& box : messages.All())
        EXPECT_EQ(box.caption, "Cadrelle");
    EXPECT_TRUE(RecordedCalls().empty());
    EXPECT_FALSE(Exists(Work("ran")));
}

TEST_F(LaunchJobTest, TheCommandRunsInATerminalThatStaysOpenUntilEnter)
{
    ::setenv("TERMINAL", (GetSession().bin + "/test-terminal").c_str(), 1);
    const std::string marker = Work("dos marker.txt");
    // "exit" must not close the window before the user has read it.
    const std::string command = "echo \"it ran\" > '" + marker + "'; exit 3";
    // The job must not wait for the terminal, which waits for Enter.
    std::future<wxString> job = std::async(std::launch::async, [&] {
        return RunJob(NJobTypeExecDosCommand, {wxString::FromUTF8(command)});
    });
    const bool returned = job.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
    EXPECT_TRUE(returned) << "the job waits for the terminal";

    const auto calls = WaitForCalls(1);
    ASSERT_EQ(calls.size(), 1u);
    const std::vector<std::string> argv = Tail(calls[0]);
    ASSERT_EQ(argv.size(), 6u);
    EXPECT_EQ(std::vector<std::string>(argv.begin(), argv.begin() + 3),
              (std::vector<std::string>{"-e", "/bin/sh", "-c"}));
    EXPECT_NE(argv[3].find("read"), std::string::npos) << "the terminal is not asked to wait for Enter";
    EXPECT_EQ(argv[5], command);

    ASSERT_TRUE(WaitUntil([&] { return ReadText(marker) == "it ran\n"; }));
    ASSERT_TRUE(WaitUntil([&] { return ReadText(Work("terminal.out")).find("[Press Enter") != std::string::npos; }));
    const std::string closed = Work("terminal.closed");
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_FALSE(Exists(closed)) << "the terminal closed before Enter";

    const int keyboard = ::open(Work("keyboard").c_str(), O_WRONLY | O_NONBLOCK);
    ASSERT_GE(keyboard, 0);
    ASSERT_EQ(::write(keyboard, "\n", 1), 1);
    ::close(keyboard);
    EXPECT_TRUE(WaitUntil([&] { return Exists(closed); }));
    job.get();
}

TEST_F(LaunchJobTest, MinimisedWhereTheTerminalCanBeAsked)
{
    settings.values["minimizeOnOpenJob"] = "1";
    // Named like a terminal we know how to ask; another name we do not.
    fs::copy_file(GetSession().bin + "/test-terminal", Work("xterm"));
    fs::copy_file(GetSession().bin + "/test-terminal", Work("otherterm"));
    ::setenv("TERMINAL", Work("xterm").c_str(), 1);
    RunJob(NJobTypeExecDosCommand, {"true"}, 21);
    ::setenv("TERMINAL", Work("otherterm").c_str(), 1);
    RunJob(NJobTypeExecDosCommand, {"true"}, 22);
    settings.values["minimizeOnOpenJob"] = "0";
    RunJob(NJobTypeExecDosCommand, {"true"}, 23);
    // The default application of a type cannot be asked at all.
    settings.values["minimizeOnOpenJob"] = "1";
    RunJob(NJobTypeOpenFolder, {wxString::FromUTF8(GetSession().work)}, 24);

    const auto calls = WaitForCalls(4);
    ASSERT_EQ(calls.size(), 4u);
    // What each program was given first, by program name.
    std::multiset<std::string> firstArgs;
    for (const auto& call : calls)
        firstArgs.insert(fs::path(call[0]).filename().string() + " " + call[1]);
    EXPECT_EQ(firstArgs, (std::multiset<std::string>{"xterm -iconic", "otherterm -e", "otherterm -e", "record files"}));
    EXPECT_EQ(log.Matching("[JID_22] otherterm cannot be asked to start minimised").size(), 1u);
    EXPECT_TRUE(log.Matching("[JID_23] otherterm cannot").empty());
    EXPECT_EQ(log.Matching("[JID_24] Test Files cannot be asked to start minimised").size(), 1u);
}

TEST_F(LaunchJobTest, ScriptsRunByTheirInterpreterInTheirOwnFolder)
{
    const std::string folder = Work("scripts here");
    fs::create_directory(folder);
    const std::string report = "echo \"$(pwd)|$0\" > \"$WORK/";
    struct Case {
        std::string name;
        std::string text;
        bool executable;
    } cases[] = {
        {"with shebang", "#!/bin/sh\n" + report + "a\"\n", true},
        {"shebang not executable", "#!/bin/sh -e\n" + report + "b\"\n", false},
        {"plain.sh", report + "c\"\n", false},
        // DOS line ends: the kernel would look for "sh\r"; the comment keeps
        // the body's "\r" out of the file name.
        {"dos lines", "#!/bin/sh\r\n" + report + "d\" #\r\n", true},
    };
    for (const Case& c : cases)
        WriteText(folder + "/" + c.name, c.text, c.executable);
    for (const Case& c : cases)
        RunJob(NJobTypeExecScriptFile, {wxString::FromUTF8(folder + "/" + c.name)});

    for (const char* marker : {"a", "b", "c", "d"}) {
        SCOPED_TRACE(marker);
        const std::string path = Work(marker);
        ASSERT_TRUE(WaitUntil([&] { return ReadText(path).find('\n') != std::string::npos; }));
        const std::string line = ReadText(path);
        EXPECT_EQ(line.substr(0, line.find('|')), folder);
    }
    EXPECT_NE(ReadText(Work("a")).find("|" + folder + "/with shebang"), std::string::npos);
    EXPECT_TRUE(messages.Boxes().empty());
}

}  // namespace

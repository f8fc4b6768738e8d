// The launch kinds against recorder handlers, in a session made before
// anything touches GIO (it caches what it reads): the launcher's X display,
// HOME and the XDG folders in a temporary folder, recorder .desktop entries
// as the default applications, no session bus. The terminal is a recorder
// that really runs what it is given; scripts leave marker files.

#include <algorithm>
#include <filesystem>
#include <future>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/settings_lookup.h"
#include "core/jobs/job_actions.h"
#include "desktop/jobs/launch_jobs.h"
#include "harness.h"

namespace fs = std::filesystem;

namespace {

std::string g_root;  // the session's folder: bin/ (first in PATH), calls/, work/

std::string At(const std::string& relative)
{
    return g_root + "/" + relative;
}

std::string Read(const std::string& path)
{
    return ReadFileBytes(wxString::FromUTF8(path));
}

void Write(const std::string& path, const std::string& text, bool executable = false)
{
    WriteFileBytes(wxString::FromUTF8(path), text);
    ::chmod(path.c_str(), executable ? 0755 : 0644);
}

// Each call writes its arguments, NUL-separated, to calls/<pid>.args; the
// rename makes the file appear complete. The terminal then runs what follows
// "-e" with the FIFO work/keyboard as its keyboard, and says when it closed.
const char kRecord[] = "#!/bin/sh\nprintf '%s\\0' \"$0\" \"$@\" > \"$CALLS/$$.tmp\" && mv \"$CALLS/$$.tmp\" \"$CALLS/$$.args\"\n";
const char kTerminal[] = "while [ $# -gt 0 ] && [ \"$1\" != \"-e\" ]; do shift; done\nshift\nexec 3<> \"$WORK/keyboard\"\n"
                         "\"$@\" <&3 > \"$WORK/terminal.out\" 2>&1\necho closed > \"$WORK/terminal.closed\"\n";

class LaunchSession : public ::testing::Environment {
public:
    void SetUp() override
    {
        g_root = m_dir.Path().utf8_string();
        for (const char* dir : {"bin", "calls", "work", "data/applications", "config", "system", "runtime", "home"})
            fs::create_directories(At(dir));
        fs::create_directory_symlink("/usr/share/mime", At("system/mime"));  // the types, none of the applications
        Write(At("bin/record"), kRecord, true);
        Write(At("bin/test-terminal"), std::string(kRecord) + kTerminal, true);
        const auto entry = [](const char* name, const char* tag, const char* types) {
            Write(At("data/applications/cadrelle-test-") + tag + ".desktop",
                  std::string("[Desktop Entry]\nType=Application\nName=") + name + "\nExec=\"" + At("bin/record") +
                      "\" " + tag + (tag[0] == 'b' ? " %u" : " %f") + "\nMimeType=" + types + "\nNoDisplay=true\n");
        };
        entry("Test Browser", "browser", "x-scheme-handler/http;x-scheme-handler/https;");
        entry("Test Files", "files", "inode/directory;text/plain;");
        Write(At("config/mimeapps.list"),
              "[Default Applications]\nx-scheme-handler/http=cadrelle-test-browser.desktop\n"
              "x-scheme-handler/https=cadrelle-test-browser.desktop\ninode/directory=cadrelle-test-files.desktop\n"
              "text/plain=cadrelle-test-files.desktop\n");
        ASSERT_TRUE(std::getenv("DISPLAY")) << "run under tests/support/desktop_session.sh";
        ::unsetenv("WAYLAND_DISPLAY");
        // A bus address where nothing listens: GIO must not reach the
        // desktop's session bus, nor start one of its own.
        const std::pair<const char*, std::string> variables[] = {
            {"HOME", At("home")}, {"XDG_DATA_HOME", At("data")}, {"XDG_CONFIG_HOME", At("config")},
            {"XDG_DATA_DIRS", At("system")}, {"XDG_CONFIG_DIRS", At("no-system-config")},
            {"XDG_RUNTIME_DIR", At("runtime")}, {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + At("runtime/no-bus")},
            {"GIO_USE_VFS", "local"}, {"GSETTINGS_BACKEND", "memory"}, {"CALLS", At("calls")}, {"WORK", At("work")},
            {"SHELL", "/bin/sh"}, {"PATH", At("bin") + ":" + std::getenv("PATH")}};
        for (const auto& [name, value] : variables)
            ::setenv(name, value.c_str(), 1);
    }

private:
    TempDir m_dir;
};

[[maybe_unused]] ::testing::Environment* const g_session = ::testing::AddGlobalTestEnvironment(new LaunchSession);

// The recorded calls (program path first), oldest first; waits up to the
// harness's deadline for `count` of them.
std::vector<std::vector<std::string>> WaitForCalls(std::size_t count)
{
    std::vector<std::pair<fs::file_time_type, std::vector<std::string>>> calls;
    WaitUntil([&] {
        calls.clear();
        for (const fs::directory_entry& file : fs::directory_iterator(At("calls"))) {
            std::istringstream in(file.path().extension() == ".args" ? Read(file.path().string()) : "");
            std::vector<std::string> call;
            for (std::string part; std::getline(in, part, '\0');)
                call.push_back(part);
            if (!call.empty())
                calls.emplace_back(file.last_write_time(), call);
        }
        return calls.size() >= count;
    });
    std::sort(calls.begin(), calls.end());
    std::vector<std::vector<std::string>> result;
    for (auto& [time, call] : calls)
        result.push_back(call);
    return result;
}

// Children of this program: a launch must leave none (a zombie or a child
// still waited for). /proc/<pid>/stat: pid (comm) state ppid ...
std::vector<std::string> StrayChildren()
{
    std::vector<std::string> stray;
    for (const fs::directory_entry& process : fs::directory_iterator("/proc")) {
        const std::string stat = Read(process.path().string() + "/stat");
        std::istringstream rest(stat.substr(std::min(stat.size(), stat.rfind(')') + 1)));
        std::string state, parent;
        if (stat.rfind(')') != std::string::npos && rest >> state >> parent && parent == std::to_string(::getpid()))
            stray.push_back(stat);
    }
    return stray;
}

class ChosenSettings : public SettingsLookup {
public:
    std::map<wxString, wxString> values;
    wxString GetSetting(const wxString& name) const override
    {
        return values.count(name) ? values.at(name) : DefaultSettings().GetSetting(name);
    }
};

class LaunchJobTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        RegisterLaunchJobActions(HarnessContext().Actions());
        HarnessContext().SetSettings(&settings);
        for (const char* dir : {"calls", "work"}) {
            fs::remove_all(At(dir));
            fs::create_directories(At(dir));
        }
        ASSERT_EQ(::mkfifo(Work("keyboard").c_str(), 0600), 0);
        ::unsetenv("TERMINAL");
    }

    void TearDown() override
    {
        // A terminal recorder still waiting for Enter must end with the test.
        const int keyboard = ::open(Work("keyboard").c_str(), O_RDWR | O_NONBLOCK);
        (void)!::write(keyboard, "\n\n\n\n", 4);
        ::close(keyboard);
        EXPECT_EQ(StrayChildren(), std::vector<std::string>()) << "a launch left a child behind";
        HarnessContext().SetSettings(nullptr);
    }

    static std::string Work(const std::string& name) { return At("work/" + name); }

    RecordedMessages messages;
    CapturedLog log;
    ChosenSettings settings;
};
TEST_F(LaunchJobTest, DefaultApplicationsReceiveExactlyTheTarget)
{
    const std::string textFile = Work("notes with blanks ü.txt");
    Write(textFile, "some text\n");
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
        const std::size_t before = WaitForCalls(0).size();
        RunJob(c.kind, {wxString::FromUTF8(c.target)});
        const auto calls = WaitForCalls(before + 1);
        ASSERT_EQ(calls.size(), before + 1);
        EXPECT_EQ(std::vector<std::string>(calls.back().begin() + 1, calls.back().end()), c.expected);
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
    Write(blob, std::string("\x00\x01\x02\xff", 4));
    Write(unknown, "echo never > \"$WORK/ran\"\n", true);
    Write(batch, "@echo off\r\n");
    Write(noInterpreter, "#!/usr/bin/env cadrelle-no-such-interpreter\n", true);
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
        {NJobTypeOpenFolder, At("work"), "DISPLAY", nullptr,
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
        std::vector<std::string> shown = messages.Boxes();
        shown.erase(shown.begin(), shown.begin() + static_cast<long>(boxes));
        // Each box names the job and the moment after what went wrong.
        for (std::string& box : shown) {
            const std::size_t at = box.find("\n\nJob: Test job (JID 12)\nTime: ");
            EXPECT_NE(at, std::string::npos) << box;
            EXPECT_EQ(box.size() - at, std::string("\n\nJob: Test job (JID 12)\nTime: 2026-01-01 00:00:00").size());
            box.resize(std::min(at, box.size()));
        }
        EXPECT_EQ(shown, c.box.empty() ? std::vector<std::string>{} : std::vector<std::string>{c.box});
        if (!c.line.empty()) {
            EXPECT_EQ(log.Matching(wxString::FromUTF8(c.line)).size(), 1u);
        }
    }
    for (const RecordedMessage& box : messages.All())
        EXPECT_EQ(box.caption, "Cadrelle");
    EXPECT_TRUE(WaitForCalls(0).empty());
    EXPECT_FALSE(fs::exists(Work("ran")));
}

TEST_F(LaunchJobTest, TheCommandRunsInATerminalThatStaysOpenUntilEnter)
{
    ::setenv("TERMINAL", (At("bin/test-terminal")).c_str(), 1);
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
    ASSERT_EQ(calls[0].size(), 7u);
    EXPECT_EQ(std::vector<std::string>(calls[0].begin() + 1, calls[0].begin() + 4),
              (std::vector<std::string>{"-e", "/bin/sh", "-c"}));
    EXPECT_NE(calls[0][4].find("read"), std::string::npos) << "the terminal is not asked to wait for Enter";
    EXPECT_EQ(calls[0][6], command);
    ASSERT_TRUE(WaitUntil([&] { return Read(marker) == "it ran\n"; }));
    ASSERT_TRUE(WaitUntil([&] { return Read(Work("terminal.out")).find("[Press Enter") != std::string::npos; }));
    const std::string closed = Work("terminal.closed");
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_FALSE(fs::exists(closed)) << "the terminal closed before Enter";

    const int keyboard = ::open(Work("keyboard").c_str(), O_WRONLY | O_NONBLOCK);
    ASSERT_GE(keyboard, 0);
    ASSERT_EQ(::write(keyboard, "\n", 1), 1);
    ::close(keyboard);
    EXPECT_TRUE(WaitUntil([&] { return fs::exists(closed); }));
    job.get();
}

TEST_F(LaunchJobTest, MinimisedWhereTheTerminalCanBeAsked)
{
    settings.values["minimizeOnOpenJob"] = "1";
    // Named like a terminal we know how to ask; another name we do not.
    fs::copy_file(At("bin/test-terminal"), Work("xterm"));
    fs::copy_file(At("bin/test-terminal"), Work("otherterm"));
    ::setenv("TERMINAL", Work("xterm").c_str(), 1);
    RunJob(NJobTypeExecDosCommand, {"true"}, 21);
    ::setenv("TERMINAL", Work("otherterm").c_str(), 1);
    RunJob(NJobTypeExecDosCommand, {"true"}, 22);
    // The default application of a type cannot be asked at all.
    RunJob(NJobTypeOpenFolder, {wxString::FromUTF8(At("work"))}, 24);

    const auto calls = WaitForCalls(3);
    ASSERT_EQ(calls.size(), 3u);
    // What each program was given first, by program name.
    std::multiset<std::string> firstArgs;
    for (const auto& call : calls)
        firstArgs.insert(fs::path(call[0]).filename().string() + " " + call[1]);
    EXPECT_EQ(firstArgs, (std::multiset<std::string>{"xterm -iconic", "otherterm -e", "record files"}));
    EXPECT_EQ(log.Matching("[JID_22] otherterm cannot be asked to start minimised").size(), 1u);
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
        Write(folder + "/" + c.name, c.text, c.executable);
    for (const Case& c : cases)
        RunJob(NJobTypeExecScriptFile, {wxString::FromUTF8(folder + "/" + c.name)});

    for (const char* marker : {"a", "b", "c", "d"}) {
        SCOPED_TRACE(marker);
        const std::string path = Work(marker);
        ASSERT_TRUE(WaitUntil([&] { return Read(path).find('\n') != std::string::npos; }));
        const std::string line = Read(path);
        EXPECT_EQ(line.substr(0, line.find('|')), folder);
    }
    EXPECT_NE(Read(Work("a")).find("|" + folder + "/with shebang"), std::string::npos);
    EXPECT_TRUE(messages.Boxes().empty());
}

}  // namespace

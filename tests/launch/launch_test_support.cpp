#include "launch_test_support.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>


namespace fs = std::filesystem;

namespace launch_test {
namespace {

Session g_session;

// Writes its arguments, NUL-separated, to a file of its own; the rename makes
// the file appear complete.
const char kRecorder[] = R"(#!/bin/sh
out="$CALLS/$$"
printf '%s\0' "$0" "$@" > "$out.tmp" && mv "$out.tmp" "$out.args"
)";

// A terminal: records how it was called, then runs what follows "-e" with
// its keyboard being a FIFO the test writes to, and says when it closed.
const char kTerminal[] = R"(#!/bin/sh
out="$CALLS/$$"
printf '%s\0' "$0" "$@" > "$out.tmp" && mv "$out.tmp" "$out.args"
while [ $# -gt 0 ] && [ "$1" != "-e" ]; do shift; done
shift
exec 3<> "$WORK/keyboard"
"$@" <&3 > "$WORK/terminal.out" 2>&1
echo closed > "$WORK/terminal.closed"
)";

std::string DesktopEntry(const std::string& name, const std::string& tag, const std::string& field,
                         const std::string& types)
{
    return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=\"" + g_session.bin + "/record\" " + tag +
           " " + field + "\nMimeType=" + types + "\nNoDisplay=true\n";
}

void SetEnv(const char* name, const std::string& value)
{
    ::setenv(name, value.c_str(), 1);
}

class LaunchEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        m_root = std::make_unique<TempDir>();
        g_session.root = m_root->Path().utf8_string();
        g_session.bin = g_session.root + "/bin";
        g_session.calls = g_session.root + "/calls";
        g_session.work = g_session.root + "/work";
        const std::string data = g_session.root + "/data";
        const std::string config = g_session.root + "/config";
        const std::string system = g_session.root + "/system-data";
        for (const std::string& dir : {g_session.bin, g_session.calls, g_session.work, data + "/applications", config,
                                       system, g_session.root + "/runtime", g_session.root + "/home"})
            fs::create_directories(dir);
        // Only the MIME database of the system, none of its applications.
        fs::create_directory_symlink("/usr/share/mime", system + "/mime");

        WriteText(g_session.bin + "/record", kRecorder, true);
        WriteText(g_session.bin + "/test-terminal", kTerminal, true);
        WriteText(data + "/applications/cadrelle-test-browser.desktop",
                  DesktopEntry("Test Browser", "browser", "%u", "x-scheme-handler/http;x-scheme-handler/https;"));
        WriteText(data + "/applications/cadrelle-test-files.desktop",
                  DesktopEntry("Test Files", "files", "%f", "inode/directory;text/plain;"));
        WriteText(config + "/mimeapps.list", "[Default Applications]\n"
                                             "x-scheme-handler/http=cadrelle-test-browser.desktop\n"
                                             "x-scheme-handler/https=cadrelle-test-browser.desktop\n"
                                             "inode/directory=cadrelle-test-files.desktop\n"
                                             "text/plain=cadrelle-test-files.desktop\n");

        ASSERT_TRUE(std::getenv("DISPLAY")) << "run under tests/support/desktop_session.sh";
        ::unsetenv("WAYLAND_DISPLAY");
        SetEnv("HOME", g_session.root + "/home");
        SetEnv("XDG_DATA_HOME", data);
        SetEnv("XDG_CONFIG_HOME", config);
        SetEnv("XDG_DATA_DIRS", system);
        SetEnv("XDG_CONFIG_DIRS", g_session.root + "/no-system-config");
        SetEnv("XDG_RUNTIME_DIR", g_session.root + "/runtime");
        // A bus address where nothing listens: GIO must not reach the
        // desktop's session bus, nor start one of its own.
        SetEnv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + g_session.root + "/runtime/no-bus");
        SetEnv("GIO_USE_VFS", "local");
        SetEnv("GSETTINGS_BACKEND", "memory");
        SetEnv("CALLS", g_session.calls);
        SetEnv("WORK", g_session.work);
        SetEnv("SHELL", "/bin/sh");
        ::unsetenv("TERMINAL");
        SetEnv("PATH", g_session.bin + ":" + std::string(std::getenv("PATH") ? std::getenv("PATH") : "/usr/bin:/bin"));
    }

    void TearDown() override { m_root.reset(); }

private:
    std::unique_ptr<TempDir> m_root;
};

[[maybe_unused]] ::testing::Environment* const g_environment =
    ::testing::AddGlobalTestEnvironment(new LaunchEnvironment);

std::vector<std::string> SplitNul(const std::string& bytes)
{
    std::vector<std::string> parts;
    std::istringstream in(bytes);
    for (std::string part; std::getline(in, part, '\0');)
        parts.push_back(part);
    return parts;
}

}  // namespace

const Session& GetSession()
{
    return g_session;
}

std::vector<std::vector<std::string>> RecordedCalls()
{
    std::vector<std::pair<fs::file_time_type, fs::path>> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(g_session.calls)) {
        if (entry.path().extension() == ".args")
            files.emplace_back(entry.last_write_time(), entry.path());
    }
    std::sort(files.begin(), files.end());
    std::vector<std::vector<std::string>> calls;
    for (const auto& file : files)
        calls.push_back(SplitNul(ReadText(file.second.string())));
    return calls;
}

void ClearRecordedCalls()
{
    for (const fs::directory_entry& entry : fs::directory_iterator(g_session.calls))
        fs::remove(entry.path());
}

std::vector<std::vector<std::string>> WaitForCalls(std::size_t count)
{
    WaitUntil([count] { return RecordedCalls().size() >= count; });
    return RecordedCalls();
}

std::vector<std::string> StrayChildren()
{
    std::vector<std::string> stray;
    const std::string self = std::to_string(::getpid());
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos)
            continue;
        // /proc/<pid>/stat: pid (comm) state ppid ...
        const std::string stat = ReadText(entry.path().string() + "/stat");
        const std::size_t close = stat.rfind(')');
        if (close == std::string::npos)
            continue;
        std::istringstream rest(stat.substr(close + 1));
        std::string state, parent;
        if (rest >> state >> parent && parent == self)
            stray.push_back(stat.substr(0, close + 1) + " " + state);
    }
    return stray;
}

wxString ChosenSettings::GetSetting(const wxString& name) const
{
    const auto found = values.find(name);
    return found != values.end() ? found->second : DefaultSettings().GetSetting(name);
}

std::string ReadText(const std::string& path)
{
    return ReadFileBytes(wxString::FromUTF8(path));
}

void WriteText(const std::string& path, const std::string& text, bool executable)
{
    WriteFileBytes(wxString::FromUTF8(path), text);
    ::chmod(path.c_str(), executable ? 0755 : 0644);
}

bool Exists(const std::string& path)
{
    std::error_code ec;
    return fs::exists(fs::symlink_status(path, ec));
}

}  // namespace launch_test

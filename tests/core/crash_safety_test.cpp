// A save killed at any moment never leaves a working copy that fails to load.

#include <csignal>
#include <random>

#include <sys/wait.h>
#include <unistd.h>

#include <sys/stat.h>

#include <gtest/gtest.h>
#include <wx/dir.h>
#include <wx/filename.h>

#include "core/data/data_file_reader.h"
#include "core/scheduler.h"
#include "harness.h"
#include "test_support.h"

namespace {

pid_t StartSaveLoop(const wxString& appDir, const char* extra)
{
    const pid_t pid = ::fork();
    if (pid == 0) {
        const wxCharBuffer dir = appDir.fn_str();
        ::execl(CADRELLE_SAVE_LOOP, CADRELLE_SAVE_LOOP, dir.data(), "3000", extra, static_cast<char*>(nullptr));
        ::_exit(127);
    }
    return pid;
}

}  // namespace

TEST(DataFileCrashSafety, KilledSaveLoopAlwaysLeavesALoadableWorkingCopy)
{
    TempDir dir;
    int status = 0;
    const pid_t first = StartSaveLoop(dir.Path(), "--once");
    ASSERT_GT(first, 0);
    ASSERT_EQ(::waitpid(first, &status, 0), first);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);

    std::mt19937 random(20261122);
    std::uniform_int_distribution<int> delayUs(1000, 80000);
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        const pid_t pid = StartSaveLoop(dir.Path(), nullptr);
        ASSERT_GT(pid, 0);
        ::usleep(static_cast<useconds_t>(delayUs(random)));
        ASSERT_EQ(::kill(pid, SIGKILL), 0);
        ASSERT_EQ(::waitpid(pid, &status, 0), pid);
        ASSERT_TRUE(WIFSIGNALED(status));

        DataFileContent check;
        ReadDataFile(dir.File("data/data1.xml"), check);
        ASSERT_TRUE(check.wellFormed) << check.problem;
        Scheduler loaded(dir.Path());
        const DataLoadReport report = loaded.LoadSchedulerData(false);
        ASSERT_EQ(report.source, DataLoadReport::Source::Working);
        ASSERT_EQ(loaded.Jobs().size(), 3000u);
    }
}

// A full disk (a small tmpfs in a namespace of the test's own) at the end of a
// headless run: told on stderr, status 1; its files are private whatever the umask.
TEST(DataFileCrashSafety, FullDiskAtExitIsToldAndEndsWithStatusOne)
{
    if (RunProcess({"unshare", "-rm", "true"}).status != 0)
        GTEST_SKIP() << "unshare -rm is not permitted here";
    TempDir dir;
    const std::string app = dir.File("app").utf8_string(), home = dir.File("home").utf8_string();
    const wxString prefs = dir.File("home/.config/Cadrelle/Cadrelle.conf");
    WriteFileBytes(prefs, "");
    ASSERT_EQ(::chmod(prefs.fn_str(), 0644), 0);
    ASSERT_TRUE(wxFileName::Mkdir(dir.File("app/data"), 0700, wxPATH_MKDIR_FULL));
    const std::string script = "mount -t tmpfs -o size=64k tmpfs \"$0/data\" && cp \"$1\" \"$0/data/data1.xml\" && "
                               "{ dd if=/dev/zero of=\"$0/data/fill\" bs=4k 2>/dev/null; umask 000; "
                               "exec \"$2\" --headless --app-dir \"$0\"; }";
    ChildProcess program;
    ASSERT_TRUE(program.Start({"unshare", "-rm", "sh", "-c", script, app, CADRELLE_TEST_DATA_DIR "/golden_data1.xml",
                               CADRELLE_BINARY},
                              home + "/out.txt",
                              {{"HOME", home}, {"XDG_CONFIG_HOME", home + "/.config"}, {"XDG_RUNTIME_DIR", home}},
                              home + "/err.txt"));
    wxArrayString logs;
    ASSERT_TRUE(WaitUntil([&] { return wxDir::GetAllFiles(dir.File("app"), &logs, "log_*.txt", wxDIR_FILES) > 0; }));
    ASSERT_TRUE(WaitUntil([&] { return ReadFileBytes(logs[0]).find("Start") != std::string::npos; }));
    EXPECT_EQ(program.Stop(SIGTERM), 1);
    EXPECT_NE(ReadFileBytes(dir.File("home/err.txt")).find("could not save its jobs and triggers"), std::string::npos)
        << ReadFileBytes(dir.File("home/err.txt"));
    for (const wxString& file : {logs[0], prefs}) {
        struct stat st {};
        ASSERT_EQ(::stat(file.fn_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 0777, 0600u) << file;
    }
}

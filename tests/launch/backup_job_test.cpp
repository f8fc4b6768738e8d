// Backup Folder on real trees: what is copied, what is skipped as unchanged,
// the notices, and that the source is never touched.

#include <filesystem>
#include <map>
#include <set>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "core/jobs/job_actions.h"
#include "desktop/jobs/launch_jobs.h"
#include "launch_test_support.h"

namespace fs = std::filesystem;
using namespace launch_test;

namespace {

// Everything about a tree that a backup could change: kind, bytes, link
// target, modification time; links are never followed.
std::map<std::string, std::string> Snapshot(const fs::path& root, bool withTimes = true)
{
    std::map<std::string, std::string> items;
    for (auto it = fs::recursive_directory_iterator(root); it != fs::recursive_directory_iterator(); ++it) {
        const fs::path relative = fs::relative(it->path(), root);
        const fs::file_status status = it->symlink_status();
        std::string item;
        if (fs::is_symlink(status)) {
            item = "link:" + fs::read_symlink(it->path()).string();
        } else if (fs::is_directory(status)) {
            item = "folder";
        } else if (fs::is_regular_file(status)) {
            item = "file:" + ReadText(it->path().string());
            if (withTimes)
                item += ":" + std::to_string(fs::last_write_time(it->path()).time_since_epoch().count());
        } else {
            item = "special";
        }
        items[relative.u8string()] = item;
    }
    return items;
}

class BackupJobTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        RegisterLaunchJobActions();
        source = fs::u8path(dir.Path().utf8_string()) / "source tree";
        destination = fs::u8path(dir.Path().utf8_string()) / "backups" / "not yet there";
        fs::create_directories(source / "docs" / "deep");
        fs::create_directories(source / "empty");
        WriteText((source / "top.txt").string(), "top\n");
        WriteText((source / "docs" / "a.txt").string(), "first version\n");
        WriteText((source / "docs" / "deep" / "b.bin").string(), std::string("\0\x01\x02\xfe\xff", 5));
        WriteText((source / fs::u8path("naïve file ü.txt")).string(), "unicode name\n");
        fs::create_symlink("top.txt", source / "link to top");
        // Followed, this link would never end.
        fs::create_symlink("..", source / "docs" / "loop");
    }

    void TearDown() override
    {
        ClearJobActions();
    }

    // Runs the job; returns its summary.
    wxString Backup(const fs::path& from, const fs::path& to)
    {
        return RunJob(NJobTypeBackupFolder, {wxString::FromUTF8(from.u8string()), wxString::FromUTF8(to.u8string())});
    }

    // The files named by "Copied" log lines since `firstLine`.
    std::set<std::string> CopiedSince(std::size_t firstLine)
    {
        std::set<std::string> copied;
        const std::vector<wxString> lines = log.Lines();
        for (std::size_t i = firstLine; i < lines.size(); ++i) {
            const int at = lines[i].Find("[JID_7] Copied ");
            if (at != wxNOT_FOUND)
                copied.insert(lines[i].Mid(at + 15).utf8_string());
        }
        return copied;
    }

    std::vector<std::string> Notices() const { return messages.Texts(RecordedMessage::Kind::Notice); }

    TempDir dir;
    fs::path source;
    fs::path destination;
    RecordedMessages messages;
    CapturedLog log;
};

TEST_F(BackupJobTest, CopiesOnlyWhatChangedSinceTheLastRun)
{
    const auto sourceBefore = Snapshot(source);

    const wxString summary = Backup(source, destination);
    const std::string success = summary.utf8_string() + "\nBackupJob execute sucessed.";
    EXPECT_EQ(CopiedSince(0), (std::set<std::string>{"top.txt", "docs/a.txt", "docs/deep/b.bin", "naïve file ü.txt",
                                                     "link to top", "docs/loop"}));
    EXPECT_EQ(Snapshot(destination), sourceBefore) << "the copy differs (or a temporary file was left)";
    EXPECT_EQ(Snapshot(source), sourceBefore);

    std::size_t mark = log.Lines().size();
    Backup(source, destination);
    EXPECT_TRUE(CopiedSince(mark).empty());

    // A new modification time alone counts as a change; so do a new size
    // alone and a new file.
    fs::last_write_time(source / "docs" / "a.txt",
                        fs::last_write_time(source / "docs" / "a.txt") + std::chrono::seconds(5));
    const auto time = fs::last_write_time(source / "top.txt");
    WriteText((source / "top.txt").string(), "top, longer now\n");
    fs::last_write_time(source / "top.txt", time);
    WriteText((source / "docs" / "deep" / "new file.txt").string(), "new\n");
    const auto sourceChanged = Snapshot(source);
    mark = log.Lines().size();
    Backup(source, destination);
    EXPECT_EQ(CopiedSince(mark), (std::set<std::string>{"docs/a.txt", "top.txt", "docs/deep/new file.txt"}));
    EXPECT_EQ(Snapshot(destination), sourceChanged);
    EXPECT_EQ(Snapshot(source), sourceChanged);

    EXPECT_EQ(Notices(), std::vector<std::string>(3, success));
}

TEST_F(BackupJobTest, RefusesWhatCannotWorkAndWritesNothing)
{
    const fs::path root = fs::u8path(dir.Path().utf8_string());
    struct Case {
        fs::path from;
        fs::path to;
        std::string reason;
    } cases[] = {
        {root / "missing", destination, "the source folder \"" + (root / "missing").u8string() + "\" does not exist"},
        {source / "top.txt", destination, "the source \"" + (source / "top.txt").u8string() + "\" is not a folder"},
        {source, source / "docs" / ".." / ".", "the source and the destination are the same folder \"" +
                                                   source.u8string() + "\""},
        {source, source / "docs" / "bak", "the destination \"" + (source / "docs" / "bak").u8string() +
                                              "\" is inside the source \"" + source.u8string() +
                                              "\"; the copy would never end"},
        {source / "docs", source, "the source \"" + (source / "docs").u8string() + "\" is inside the destination \"" +
                                      source.u8string() + "\"; the copy could overwrite the source"},
    };
    const auto before = Snapshot(source);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.reason);
        const std::size_t notices = Notices().size();
        const wxString summary = Backup(c.from, c.to);
        ASSERT_EQ(Notices().size(), notices + 1);
        EXPECT_EQ(Notices().back(), summary.utf8_string() + "\nBackupJob execute failed.\n" + c.reason);
    }
    EXPECT_EQ(Snapshot(source), before);
    EXPECT_FALSE(fs::exists(destination.parent_path()));

    const wxString summary = RunJob(NJobTypeBackupFolder, {wxString::FromUTF8(source.u8string())});
    EXPECT_EQ(Notices().back(), summary.utf8_string() + "\nBackupJob execute failed.\nthe destination folder is not set");
}

TEST_F(BackupJobTest, KeepsCopyingAfterAFailureAndNamesTheFirst)
{
    // A folder where a file should go, and a FIFO that cannot be copied.
    fs::create_directories(destination / "top.txt" / "inside");
    ASSERT_EQ(::mkfifo((source / "a pipe").c_str(), 0600), 0);

    const wxString summary = Backup(source, destination);
    EXPECT_EQ(Notices(), std::vector<std::string>{summary.utf8_string() +
                                                  "\nBackupJob execute failed.\n"
                                                  "a pipe: not a regular file, folder or link\n"
                                                  "2 item(s) not copied"});
    EXPECT_EQ(log.Matching("[JID_7] Not copied top.txt: the destination has a folder of that name").size(), 1u);
    EXPECT_EQ(CopiedSince(0), (std::set<std::string>{"docs/a.txt", "docs/deep/b.bin", "naïve file ü.txt",
                                                     "link to top", "docs/loop"}));
    EXPECT_TRUE(fs::is_directory(destination / "top.txt" / "inside"));
    EXPECT_TRUE(fs::is_directory(destination / "empty"));
}

}  // namespace

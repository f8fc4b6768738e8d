// Backup Folder on real trees: what is copied, what is skipped as unchanged,
// the notices, and that the source is never touched.

#include <filesystem>
#include <map>
#include <set>
#include <tuple>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "core/jobs/job_actions.h"
#include "desktop/jobs/launch_jobs.h"
#include "harness.h"

namespace fs = std::filesystem;

namespace {

void Write(const fs::path& path, const std::string& bytes)
{
    WriteFileBytes(wxString::FromUTF8(path.u8string()), bytes);
}

// What a backup could change: kind, bytes, link target, modification time;
// links are never followed.
std::map<std::string, std::string> Snapshot(const fs::path& root)
{
    std::map<std::string, std::string> items;
    for (auto it = fs::recursive_directory_iterator(root); it != fs::recursive_directory_iterator(); ++it) {
        const fs::file_status status = it->symlink_status();
        std::string& item = items[fs::relative(it->path(), root).u8string()];
        if (fs::is_symlink(status))
            item = "link:" + fs::read_symlink(it->path()).string();
        else if (fs::is_regular_file(status))
            item = ReadFileBytes(wxString::FromUTF8(it->path().u8string())) + ":" +
                   std::to_string(fs::last_write_time(it->path()).time_since_epoch().count());
        else
            item = fs::is_directory(status) ? "folder" : "special";
    }
    return items;
}

class BackupJobTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        RegisterLaunchJobActions(HarnessContext().Actions());
        fs::create_directories(source / "docs" / "deep");
        fs::create_directories(source / "empty");
        Write(source / "top.txt", "top\n");
        Write(source / "docs" / "a.txt", "first version\n");
        Write(source / "docs" / "deep" / "b.bin", std::string("\0\x01\x02\xfe\xff", 5));
        Write(source / fs::u8path("naïve file ü.txt"), "unicode name\n");
        fs::create_symlink("top.txt", source / "link to top");
        fs::create_symlink("..", source / "docs" / "loop");  // followed, it would never end
    }

    // Runs the job; returns the files named by its "Copied" log lines.
    std::set<std::string> Backup(const fs::path& from, const fs::path& to)
    {
        const std::size_t first = log.Lines().size();
        summary = RunJob(NJobTypeBackupFolder, {wxString::FromUTF8(from.u8string()), wxString::FromUTF8(to.u8string())});
        std::set<std::string> copied;
        for (std::size_t i = first; i < log.Lines().size(); ++i) {
            const int at = log.Lines()[i].Find("[JID_7] Copied ");
            if (at != wxNOT_FOUND)
                copied.insert(log.Lines()[i].Mid(at + 15).utf8_string());
        }
        return copied;
    }
    std::vector<std::string> Notices() const { return messages.Texts(RecordedMessage::Kind::Notice); }

    TempDir dir;
    const fs::path root = fs::u8path(dir.Path().utf8_string());
    const fs::path source = root / "source tree";
    const fs::path destination = root / "backups" / "not yet there";
    wxString summary;
    RecordedMessages messages;
    CapturedLog log;
};

TEST_F(BackupJobTest, CopiesOnlyWhatChangedSinceTheLastRun)
{
    const auto sourceBefore = Snapshot(source);
    EXPECT_EQ(Backup(source, destination), (std::set<std::string>{"top.txt", "docs/a.txt", "docs/deep/b.bin",
                                                                  "naïve file ü.txt", "link to top", "docs/loop"}));
    EXPECT_EQ(Snapshot(destination), sourceBefore) << "the copy differs (or a temporary file was left)";
    EXPECT_EQ(Snapshot(source), sourceBefore);
    EXPECT_TRUE(Backup(source, destination).empty());

    // A new modification time alone counts as a change; so do a new size
    // alone and a new file.
    const fs::path a = source / "docs" / "a.txt", top = source / "top.txt";
    fs::last_write_time(a, fs::last_write_time(a) + std::chrono::seconds(5));
    const auto time = fs::last_write_time(top);
    Write(top, "top, longer now\n");
    fs::last_write_time(top, time);
    Write(source / "docs" / "deep" / "new file.txt", "new\n");
    const auto sourceChanged = Snapshot(source);
    EXPECT_EQ(Backup(source, destination), (std::set<std::string>{"docs/a.txt", "top.txt", "docs/deep/new file.txt"}));
    EXPECT_EQ(Snapshot(destination), sourceChanged);
    EXPECT_EQ(Snapshot(source), sourceChanged);
    EXPECT_EQ(Notices(), std::vector<std::string>(3, summary.utf8_string() + "\nBackupJob execute sucessed."));
}

TEST_F(BackupJobTest, RefusesWhatCannotWorkAndWritesNothing)
{
    const std::string src = source.u8string(), docs = (source / "docs").u8string();
    const std::tuple<fs::path, fs::path, std::string> cases[] = {
        {root / "missing", destination, "the source folder \"" + (root / "missing").u8string() + "\" does not exist"},
        {source / "top.txt", destination, "the source \"" + src + "/top.txt\" is not a folder"},
        {source, source / "docs" / ".." / ".", "the source and the destination are the same folder \"" + src + "\""},
        {source, source / "docs" / "bak",
         "the destination \"" + docs + "/bak\" is inside the source \"" + src + "\"; the copy would never end"},
        {source / "docs", source,
         "the source \"" + docs + "\" is inside the destination \"" + src + "\"; the copy could overwrite the source"},
    };
    const auto before = Snapshot(source);
    for (const auto& [from, to, reason] : cases) {
        SCOPED_TRACE(reason);
        Backup(from, to);
        EXPECT_EQ(Notices().back(), summary.utf8_string() + "\nBackupJob execute failed.\n" + reason);
    }
    EXPECT_EQ(Notices().size(), std::size(cases));
    EXPECT_EQ(Snapshot(source), before);
    EXPECT_FALSE(fs::exists(destination.parent_path()));
    summary = RunJob(NJobTypeBackupFolder, {wxString::FromUTF8(src)});
    EXPECT_EQ(Notices().back(), summary.utf8_string() + "\nBackupJob execute failed.\nthe destination folder is not set");
}

TEST_F(BackupJobTest, KeepsCopyingAfterAFailureAndNamesTheFirst)
{
    // A folder where a file should go, and a FIFO that cannot be copied.
    fs::create_directories(destination / "top.txt" / "inside");
    ASSERT_EQ(::mkfifo((source / "a pipe").c_str(), 0600), 0);
    EXPECT_EQ(Backup(source, destination), (std::set<std::string>{"docs/a.txt", "docs/deep/b.bin", "naïve file ü.txt",
                                                                  "link to top", "docs/loop"}));
    EXPECT_EQ(Notices(), std::vector<std::string>{summary.utf8_string() + "\nBackupJob execute failed.\n"
                                                  "a pipe: not a regular file, folder or link\n2 item(s) not copied"});
    EXPECT_EQ(log.Matching("[JID_7] Not copied top.txt: the destination has a folder of that name").size(), 1u);
    EXPECT_TRUE(fs::is_directory(destination / "top.txt" / "inside"));
    EXPECT_TRUE(fs::is_directory(destination / "empty"));
}

}  // namespace

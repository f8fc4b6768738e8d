// Empty Recyclebin in real temporary folders, symbolic links never followed.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <gtest/gtest.h>
#include <wx/filename.h>

#include "core/jobs/job.h"
#include "desktop/platform/trash.h"
#include "system_test_support.h"

namespace {

void MakeDirs(const std::string& path)
{
    ASSERT_TRUE(wxFileName::Mkdir(wxString::FromUTF8(path), 0755, wxPATH_MKDIR_FULL)) << path;
}

void MakeFile(const std::string& path, const std::string& content = "x")
{
    MakeDirs(path.substr(0, path.rfind('/')));
    WriteFileBytes(wxString::FromUTF8(path), content);
}

bool Exists(const std::string& path)
{
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0;
}

bool IsEmptyFolder(const std::string& folder)
{
    std::error_code error;
    return std::filesystem::is_directory(folder, error) && std::filesystem::is_empty(folder, error);
}

// The job also empties the trash on every mounted volume: skipped where one
// of ours exists.
class EmptyRecyclebinJob : public ::testing::Test {
protected:
    void SetUp() override
    {
        const std::vector<std::string> real = TrashFolders("", MountTops(), static_cast<unsigned>(::getuid()));
        if (!real.empty())
            GTEST_SKIP() << "this machine has a trash on a mounted volume that the job would empty: " << real[0];
    }
    std::string Path(const std::string& relative) const { return temp.File(wxString::FromUTF8(relative)).utf8_string(); }

    const TempDir temp;
    RecordedMessages messages;
    CapturedLog log;
};

TEST_F(EmptyRecyclebinJob, EmptiesTheHomeTrashAndSparesWhatLinksPointTo)
{
    const std::string trash = Path("data/Trash"), outside = Path("outside");
    for (const char* file : {"/files/report.txt", "/files/photos/2023/summer.png", "/files/.hidden",
                             "/info/report.txt.trashinfo", "/expunged/half-gone", "/directorysizes"})
        MakeFile(trash + file);
    MakeFile(outside + "/keep.txt", "keep me");
    MakeFile(outside + "/folder/inner.txt", "inner");
    ASSERT_EQ(::symlink((outside + "/keep.txt").c_str(), (trash + "/files/link-to-file").c_str()), 0);
    ASSERT_EQ(::symlink((outside + "/folder").c_str(), (trash + "/files/photos/link-deeper").c_str()), 0);
    const ScopedEnv xdg("XDG_DATA_HOME", Path("data").c_str());
    const wxString summary = RunJob(NJobTypeEmptyRecyclebin, {}, 31, "weekly clean");
    EXPECT_TRUE(IsEmptyFolder(trash + "/files"));
    EXPECT_TRUE(IsEmptyFolder(trash + "/info"));
    EXPECT_TRUE(!Exists(trash + "/expunged") || IsEmptyFolder(trash + "/expunged"));
    EXPECT_FALSE(Exists(trash + "/directorysizes"));
    EXPECT_EQ(ReadFileBytes(wxString::FromUTF8(outside + "/keep.txt")), "keep me");
    EXPECT_EQ(ReadFileBytes(wxString::FromUTF8(outside + "/folder/inner.txt")), "inner");
    const std::vector<RecordedMessage> shown = messages.All();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(std::make_tuple(shown[0].kind, shown[0].jobId, shown[0].text),
              std::make_tuple(RecordedMessage::Kind::Notice, 31u, summary.utf8_string() + "\nEmpty RecycleBin successed."));
    EXPECT_EQ(log.Matching("[JID_31] Empty Recyclebin done").size(), 1u);

    // A link in place of "files" is left alone, not emptied through.
    MakeFile(Path("target/precious"), "p");
    MakeDirs(Path("linked-trash/info"));
    ASSERT_EQ(::symlink(Path("target").c_str(), Path("linked-trash/files").c_str()), 0);
    EXPECT_TRUE(EmptyTrashFolders({Path("linked-trash")}).ok);
    EXPECT_EQ(ReadFileBytes(wxString::FromUTF8(Path("target/precious"))), "p");
}

// A volume mounted on a folder in the trash cannot be removed: the one failure every user (root included)
// meets. The test runs itself again in a user and mount namespace of its own to mount one.
TEST_F(EmptyRecyclebinJob, AMountedFolderInTheTrashIsReportedAndTheRestEmptied)
{
    const char* inside = std::getenv("CADRELLE_TRASH_NAMESPACE");
    if (!inside) {
        if (RunProcess({"unshare", "-rm", "true"}).status != 0)
            GTEST_SKIP() << "user and mount namespaces are not available here (unshare -rm failed)";
        const ScopedEnv mark("CADRELLE_TRASH_NAMESPACE", Path("").c_str());
        const ProcessResult run = RunProcess({"unshare", "-rm", std::filesystem::read_symlink("/proc/self/exe").string(),
                                              "--gtest_filter=EmptyRecyclebinJob.AMountedFolder*"});
        EXPECT_NE(run.out.find("[  PASSED  ] 1 test"), std::string::npos) << run.out << run.err;
        EXPECT_TRUE(IsEmptyFolder(Path("data/Trash/files/mnt")));  // the mount went with the namespace
        return;
    }
    const std::string trash = std::string(inside) + "/data/Trash";
    MakeFile(trash + "/files/plain.txt");
    MakeDirs(trash + "/files/mnt");
    ASSERT_EQ(RunProcess({"mount", "-t", "tmpfs", "cadrelle-test", trash + "/files/mnt"}).status, 0);
    MakeFile(trash + "/files/mnt/on-another-volume.txt", "other");
    const ScopedEnv xdg("XDG_DATA_HOME", (std::string(inside) + "/data").c_str());
    const wxString summary = RunJob(NJobTypeEmptyRecyclebin, {}, 33, "ns");
    EXPECT_FALSE(Exists(trash + "/files/plain.txt"));
    EXPECT_EQ(ReadFileBytes(wxString::FromUTF8(trash + "/files/mnt/on-another-volume.txt")), "other");
    const std::vector<RecordedMessage> shown = messages.All();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(std::make_tuple(shown[0].kind, shown[0].text),
              std::make_tuple(RecordedMessage::Kind::Box, summary.utf8_string() + "\n\nEmpty RecycleBin failed.\n" +
                                                              "cannot remove \"" + trash + "/files/mnt\": " + std::strerror(EBUSY)));
}

TEST(TrashLocations, HomeTrashVolumeTrashesAndMountPoints)
{
    {
        const ScopedEnv home("HOME", "/home/someone");
        const std::pair<const char*, const char*> rows[] = {
            {"/data/elsewhere", "/data/elsewhere/Trash"}, {nullptr, "/home/someone/.local/share/Trash"},
            {"", "/home/someone/.local/share/Trash"}, {"relative/data", "/home/someone/.local/share/Trash"},
        };
        for (const auto& [dataHome, trash] : rows) {
            const ScopedEnv xdg("XDG_DATA_HOME", dataHome);
            EXPECT_EQ(HomeTrashFolder(), trash) << (dataHome ? dataHome : "(unset)");
        }
    }
    const TempDir dir;
    auto path = [&](const char* relative) { return dir.File(relative).utf8_string(); };
    MakeDirs(path("home-trash/files"));
    MakeDirs(path("good/.Trash/4321/files"));  // sticky shared trash with our folder
    ASSERT_EQ(::chmod(path("good/.Trash").c_str(), 01777), 0);
    MakeDirs(path("good/.Trash-4321/files"));
    MakeDirs(path("loose/.Trash/4321/files"));  // not sticky: anyone could have put ours there
    ASSERT_EQ(::chmod(path("loose/.Trash").c_str(), 0777), 0);
    MakeDirs(path("linked"));  // links planted in place of trash folders
    ASSERT_EQ(::symlink(path("good/.Trash").c_str(), path("linked/.Trash").c_str()), 0);
    ASSERT_EQ(::symlink(path("good/.Trash-4321").c_str(), path("linked/.Trash-4321").c_str()), 0);
    MakeDirs(path("other/.Trash-1000/files"));  // another user's only
    EXPECT_EQ(TrashFolders(path("home-trash"), {path("good"), path("loose"), path("linked"), path("other"),
                                                path("missing"), path("good") + "/"}, 4321),
              (std::vector<std::string>{path("home-trash"), path("good/.Trash/4321"), path("good/.Trash-4321")}));
    EXPECT_EQ(TrashFolders(path("no-home-trash"), {}, 4321), std::vector<std::string>{});

    WriteFileBytes(dir.File("mountinfo"), "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                                          "35 22 8:17 / /media/USB\\040Stick rw - vfat /dev/sdb1 rw\n"
                                          "36 22 0:40 / /mnt/tab\\011and\\134slash rw - tmpfs none rw\n"
                                          "37 22 0:41 /sub /srv/bind rw - ext4 /dev/sda1 rw\n");
    EXPECT_EQ(MountTops(path("mountinfo")),
              (std::vector<std::string>{"/", "/media/USB Stick", "/mnt/tab\tand\\slash", "/srv/bind"}));
    EXPECT_TRUE(MountTops(path("no-such-file")).empty());
}

}  // namespace

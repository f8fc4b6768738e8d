// Empty Recyclebin: the home trash and the per-volume trash folders emptied
// in real temporary folders, symbolic links never followed, failures named.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

#include <gtest/gtest.h>
#include <wx/dir.h>
#include <wx/filename.h>

#include "core/jobs/job.h"
#include "desktop/platform/trash.h"
#include "system_test_support.h"

namespace {

std::string Path(const TempDir& dir, const std::string& relative)
{
    return dir.File(wxString::FromUTF8(relative)).utf8_string();
}

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

// Names inside a folder; empty for a missing one.
std::vector<std::string> Entries(const std::string& folder)
{
    std::vector<std::string> names;
    wxDir dir;
    if (!wxDir::Exists(wxString::FromUTF8(folder)) || !dir.Open(wxString::FromUTF8(folder)))
        return names;
    wxString name;
    for (bool more = dir.GetFirst(&name, wxEmptyString, wxDIR_DIRS | wxDIR_FILES | wxDIR_HIDDEN); more;
         more = dir.GetNext(&name))
        names.push_back(name.utf8_string());
    return names;
}

// A trash as a desktop leaves it: trashed files and folders, their info
// files, and links that point outside the trash.
void FillTrash(const std::string& trash, const std::string& outside)
{
    MakeFile(trash + "/files/report.txt", "report");
    MakeFile(trash + "/files/photos/2023/summer.png", "png");
    MakeFile(trash + "/files/.hidden", "h");
    MakeFile(trash + "/info/report.txt.trashinfo", "[Trash Info]\n");
    MakeFile(trash + "/info/photos.trashinfo", "[Trash Info]\n");
    MakeFile(trash + "/expunged/half-gone", "e");
    MakeFile(trash + "/directorysizes", "3 1700000000 photos\n");
    MakeFile(outside + "/keep.txt", "keep me");
    MakeFile(outside + "/folder/inner.txt", "inner");
    ASSERT_EQ(::symlink((outside + "/keep.txt").c_str(), (trash + "/files/link-to-file").c_str()), 0);
    ASSERT_EQ(::symlink((outside + "/folder").c_str(), (trash + "/files/link-to-folder").c_str()), 0);
    ASSERT_EQ(::symlink((outside + "/folder").c_str(), (trash + "/files/photos/link-deeper").c_str()), 0);
}

void ExpectEmptied(const std::string& trash, const std::string& outside)
{
    SCOPED_TRACE(trash);
    EXPECT_TRUE(wxDir::Exists(wxString::FromUTF8(trash + "/files")));
    EXPECT_TRUE(wxDir::Exists(wxString::FromUTF8(trash + "/info")));
    EXPECT_TRUE(Entries(trash + "/files").empty());
    EXPECT_TRUE(Entries(trash + "/info").empty());
    EXPECT_TRUE(Entries(trash + "/expunged").empty());
    EXPECT_FALSE(Exists(trash + "/directorysizes"));
    EXPECT_EQ(ReadFileBytes(wxString::FromUTF8(outside + "/keep.txt")), "keep me");
    EXPECT_EQ(ReadFileBytes(wxString::FromUTF8(outside + "/folder/inner.txt")), "inner");
}

// The job also empties the trash on every mounted volume. Where this
// machine has one of ours, a test run would empty it: such a machine skips.
std::string RealVolumeTrash()
{
    const std::vector<std::string> real = TrashFolders("", MountTops(), static_cast<unsigned>(::getuid()));
    return real.empty() ? std::string() : real.front();
}

const char* const kSuccess = "\nEmpty RecycleBin successed.";
const char* const kFailure = "\n\nEmpty RecycleBin failed.\n";

TEST(EmptyRecyclebinJob, EmptiesTheHomeTrashAndSparesWhatLinksPointTo)
{
    const std::string volumeTrash = RealVolumeTrash();
    if (!volumeTrash.empty())
        GTEST_SKIP() << "this machine has a trash on a mounted volume that the job would empty: " << volumeTrash;
    const TempDir dir;
    const std::string dataHome = Path(dir, "data");
    FillTrash(dataHome + "/Trash", Path(dir, "outside"));
    const ScopedEnv xdg("XDG_DATA_HOME", dataHome.c_str());
    RecordedMessages messages;
    CapturedLog log;
    const wxString summary = RunJob(NJobTypeEmptyRecyclebin, {}, 31, "weekly clean");
    ExpectEmptied(dataHome + "/Trash", Path(dir, "outside"));
    const std::vector<RecordedMessage> shown = messages.All();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].kind, RecordedMessage::Kind::Notice);
    EXPECT_EQ(shown[0].jobId, 31u);
    EXPECT_EQ(shown[0].text, summary.utf8_string() + kSuccess);
    EXPECT_EQ(log.Matching("[JID_31] Empty Recyclebin done").size(), 1u);
}

TEST(EmptyRecyclebinJob, AMissingOrEmptyTrashIsAlreadyEmptied)
{
    const std::string volumeTrash = RealVolumeTrash();
    if (!volumeTrash.empty())
        GTEST_SKIP() << "this machine has a trash on a mounted volume that the job would empty: " << volumeTrash;
    const TempDir dir;
    RecordedMessages messages;
    {
        // XDG_DATA_HOME unset: the trash under HOME, which has none.
        const ScopedEnv xdg("XDG_DATA_HOME", nullptr);
        const ScopedEnv home("HOME", Path(dir, "home").c_str());
        RunJob(NJobTypeEmptyRecyclebin, {}, 32, "");
    }
    MakeDirs(Path(dir, "data/Trash/files"));
    MakeDirs(Path(dir, "data/Trash/info"));
    const ScopedEnv xdg("XDG_DATA_HOME", Path(dir, "data").c_str());
    RunJob(NJobTypeEmptyRecyclebin, {}, 32, "");
    const std::vector<std::string> notices = messages.Texts(RecordedMessage::Kind::Notice);
    ASSERT_EQ(notices.size(), 2u);
    EXPECT_EQ(notices[0], notices[1]);
    EXPECT_TRUE(messages.Texts(RecordedMessage::Kind::Box).empty());
}

TEST(TrashLocations, HomeTrashFollowsTheXdgRules)
{
    const TempDir dir;
    const ScopedEnv home("HOME", "/home/someone");
    {
        const ScopedEnv xdg("XDG_DATA_HOME", "/data/elsewhere");
        EXPECT_EQ(HomeTrashFolder(), "/data/elsewhere/Trash");
    }
    for (const char* ignored : {static_cast<const char*>(nullptr), "", "relative/data"}) {
        const ScopedEnv xdg("XDG_DATA_HOME", ignored);
        EXPECT_EQ(HomeTrashFolder(), "/home/someone/.local/share/Trash");
    }
}

TEST(TrashLocations, OnlyTrustedFoldersOnEachVolumeCount)
{
    const TempDir dir;
    const unsigned uid = 4321;
    const std::string home = Path(dir, "home-trash");
    MakeDirs(home + "/files");
    // good: sticky shared trash with our folder, and a private one.
    MakeDirs(Path(dir, "good/.Trash/4321/files"));
    ASSERT_EQ(::chmod(Path(dir, "good/.Trash").c_str(), 01777), 0);
    MakeDirs(Path(dir, "good/.Trash-4321/files"));
    // not sticky: anyone could have put our folder there.
    MakeDirs(Path(dir, "loose/.Trash/4321/files"));
    ASSERT_EQ(::chmod(Path(dir, "loose/.Trash").c_str(), 0777), 0);
    // links planted in place of trash folders.
    MakeDirs(Path(dir, "linked"));
    ASSERT_EQ(::symlink(Path(dir, "good/.Trash").c_str(), Path(dir, "linked/.Trash").c_str()), 0);
    ASSERT_EQ(::symlink(Path(dir, "good/.Trash-4321").c_str(), Path(dir, "linked/.Trash-4321").c_str()), 0);
    // another user's trash only.
    MakeDirs(Path(dir, "other/.Trash-1000/files"));

    const std::vector<std::string> tops = {Path(dir, "good"), Path(dir, "loose"), Path(dir, "linked"),
                                           Path(dir, "other"), Path(dir, "missing"), Path(dir, "good") + "/"};
    const std::vector<std::string> expected = {home, Path(dir, "good/.Trash/4321"), Path(dir, "good/.Trash-4321")};
    EXPECT_EQ(TrashFolders(home, tops, uid), expected);
    EXPECT_EQ(TrashFolders(Path(dir, "no-home-trash"), {}, uid), std::vector<std::string>{});
}

TEST(TrashLocations, MountPointsAreReadWithTheirEscapesDecoded)
{
    const TempDir dir;
    const std::string info = Path(dir, "mountinfo");
    WriteFileBytes(wxString::FromUTF8(info),
                   "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                   "35 22 8:17 / /media/USB\\040Stick rw - vfat /dev/sdb1 rw\n"
                   "36 22 0:40 / /mnt/tab\\011and\\134slash rw - tmpfs none rw\n"
                   "37 22 0:41 /sub /srv/bind rw - ext4 /dev/sda1 rw\n");
    const std::vector<std::string> expected = {"/", "/media/USB Stick", "/mnt/tab\tand\\slash", "/srv/bind"};
    EXPECT_EQ(MountTops(info), expected);
    EXPECT_TRUE(MountTops(Path(dir, "no-such-file")).empty());
}

TEST(TrashFoldersEmptied, EveryGivenTrashIsEmptiedAndLinksStayUnfollowed)
{
    const TempDir dir;
    const std::vector<std::string> trashes = {Path(dir, "home/Trash"), Path(dir, "vol/.Trash-7")};
    for (const std::string& trash : trashes)
        FillTrash(trash, trash + "-outside");
    // A link in place of "files" is left alone, not emptied through.
    MakeFile(Path(dir, "target/precious"), "p");
    MakeDirs(Path(dir, "linked-trash/info"));
    ASSERT_EQ(::symlink(Path(dir, "target").c_str(), Path(dir, "linked-trash/files").c_str()), 0);

    std::vector<std::string> all = trashes;
    all.push_back(Path(dir, "linked-trash"));
    const SystemOutcome outcome = EmptyTrashFolders(all);
    EXPECT_TRUE(outcome.ok) << outcome.reason;
    for (const std::string& trash : trashes)
        ExpectEmptied(trash, trash + "-outside");
    EXPECT_EQ(ReadFileBytes(wxString::FromUTF8(Path(dir, "target/precious"))), "p");
}

// A real volume: a tmpfs mounted in a user and mount namespace of a child
// run of this program, found through /proc/self/mountinfo. A volume mounted
// inside the home trash cannot be removed and must not be emptied: the one
// failure every user (root included) meets.
constexpr const char* kNamespaceDir = "CADRELLE_TRASH_NAMESPACE_DIR";

TEST(TrashInMountNamespace, RealVolumesAreFoundAndAMountedFolderIsReported)
{
    const std::string volumeTrash = RealVolumeTrash();
    if (!volumeTrash.empty())
        GTEST_SKIP() << "this machine has a trash on a mounted volume that the job would empty: " << volumeTrash;
    if (RunProcess({"unshare", "-rm", "true"}).status != 0)
        GTEST_SKIP() << "unprivileged user and mount namespaces are not available here (unshare -rm failed)";
    const TempDir dir;
    const std::string root = dir.Path().utf8_string();
    const ScopedEnv where(kNamespaceDir, root.c_str());
    char self[4096] = {};
    const ssize_t length = ::readlink("/proc/self/exe", self, sizeof self - 1);
    ASSERT_GT(length, 0);
    const ProcessResult run = RunProcess({"unshare", "-rm", std::string(self, static_cast<std::size_t>(length)),
                                          "--gtest_also_run_disabled_tests",
                                          "--gtest_filter=TrashInMountNamespace.DISABLED_ChildRun"});
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_NE(run.out.find("[  PASSED  ] 1 test"), std::string::npos) << run.out;
    // The mounts went with the namespace; the folders the child made stay.
    EXPECT_TRUE(Entries(root + "/vol").empty());
    EXPECT_TRUE(Entries(root + "/data/Trash/files/mnt").empty());
}

TEST(TrashInMountNamespace, DISABLED_ChildRun)
{
    const char* rootText = std::getenv(kNamespaceDir);
    ASSERT_TRUE(rootText) << "run by the test above only";
    const std::string root = rootText;
    const std::string uid = std::to_string(::getuid());
    MakeDirs(root + "/vol");
    ASSERT_EQ(RunProcess({"mount", "-t", "tmpfs", "cadrelle-test", root + "/vol"}).status, 0);
    const std::string volume = root + "/vol/.Trash-" + uid;
    FillTrash(volume, root + "/vol/outside");
    const std::string home = root + "/data/Trash";
    MakeFile(home + "/files/plain.txt", "p");
    MakeDirs(home + "/files/mnt");
    ASSERT_EQ(RunProcess({"mount", "-t", "tmpfs", "cadrelle-inner", home + "/files/mnt"}).status, 0);
    MakeFile(home + "/files/mnt/on-another-volume.txt", "other");
    ASSERT_NE(MountTops().size(), 0u);

    const ScopedEnv xdg("XDG_DATA_HOME", (root + "/data").c_str());
    RecordedMessages messages;
    const wxString summary = RunJob(NJobTypeEmptyRecyclebin, {}, 33, "ns");
    ExpectEmptied(volume, root + "/vol/outside");
    EXPECT_FALSE(Exists(home + "/files/plain.txt"));
    EXPECT_EQ(ReadFileBytes(wxString::FromUTF8(home + "/files/mnt/on-another-volume.txt")), "other");
    const std::vector<RecordedMessage> shown = messages.All();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].kind, RecordedMessage::Kind::Box);
    EXPECT_EQ(shown[0].caption, "Cadrelle");
    EXPECT_EQ(shown[0].text, summary.utf8_string() + kFailure + "cannot remove \"" +
                                 home + "/files/mnt\": " + std::strerror(EBUSY));
}

}  // namespace

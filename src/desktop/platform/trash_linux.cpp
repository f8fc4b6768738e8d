// The trash by the FreeDesktop rules: one trash in the user's data folder
// and one per mounted volume. GIO would do this only with gvfs running, and
// then silently nothing without it, so we remove the files ourselves.

#include "desktop/platform/trash.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct WalkRecord {
    std::string firstFailure;
    int firstCode = 0;
    int failures = 0;
};

void NoteFailure(WalkRecord& record, const std::string& path, int code, const char* action)
{
    ++record.failures;
    if (record.firstFailure.empty()) {
        record.firstCode = code;
        record.firstFailure = std::string("cannot ") + action + " \"" + path + "\": " + std::strerror(code);
    }
}

// Removes everything inside the open folder `fd` (taken over and closed).
// Works relative to folder descriptors and never follows a symbolic link,
// so a link swapped in while we walk cannot lead us out of the trash. A
// folder where another volume is mounted is not ours to empty: it stays and
// is reported.
void RemoveContents(int fd, const std::string& path, dev_t device, WalkRecord& record)
{
    DIR* dir = ::fdopendir(fd);
    if (!dir) {
        NoteFailure(record, path, errno, "read");
        ::close(fd);
        return;
    }
    const int dirFd = ::dirfd(dir);
    while (dirent* entry = ::readdir(dir)) {
        const char* name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
            continue;
        const std::string child = path + "/" + name;
        struct stat info {};
        if (::fstatat(dirFd, name, &info, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno != ENOENT)
                NoteFailure(record, child, errno, "examine");
            continue;
        }
        if (!S_ISDIR(info.st_mode)) {
            if (::unlinkat(dirFd, name, 0) != 0 && errno != ENOENT)
                NoteFailure(record, child, errno, "remove");
            continue;
        }
        if (info.st_dev != device) {
            NoteFailure(record, child, EBUSY, "remove");
            continue;
        }
        const int sub = ::openat(dirFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (sub < 0) {
            NoteFailure(record, child, errno, "open");
            continue;
        }
        RemoveContents(sub, child, device, record);
        if (::unlinkat(dirFd, name, AT_REMOVEDIR) != 0 && errno != ENOENT) {
            // A folder whose contents failed is already reported.
            if (errno != ENOTEMPTY || record.failures == 0)
                NoteFailure(record, child, errno, "remove");
        }
    }
    ::closedir(dir);
}

// Empties `folder` without removing it. A missing folder is already empty;
// a symbolic link in its place is left alone, never followed.
void EmptyFolder(const std::string& folder, WalkRecord& record)
{
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        if (errno != ENOENT && errno != ELOOP && errno != ENOTDIR)
            NoteFailure(record, folder, errno, "open");
        return;
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0) {
        NoteFailure(record, folder, errno, "examine");
        ::close(fd);
        return;
    }
    RemoveContents(fd, folder, info.st_dev, record);
}

bool IsRealFolder(const std::string& path, struct stat* info = nullptr)
{
    struct stat own {};
    struct stat* target = info ? info : &own;
    return ::lstat(path.c_str(), target) == 0 && S_ISDIR(target->st_mode);
}

std::string Join(const std::string& folder, const std::string& name)
{
    if (!folder.empty() && folder.back() == '/')
        return folder + name;
    return folder + "/" + name;
}

// mountinfo escapes blanks, tabs, newlines and backslashes as \ooo.
std::string DecodeMountField(const std::string& field)
{
    std::string out;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            const std::string digits = field.substr(i + 1, 3);
            if (std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '7'; })) {
                out += static_cast<char>(std::stoi(digits, nullptr, 8));
                i += 3;
                continue;
            }
        }
        out += field[i];
    }
    return out;
}

}  // namespace

std::string HomeTrashFolder()
{
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    // The variable counts only when absolute, as for every XDG folder.
    if (dataHome && dataHome[0] == '/')
        return Join(dataHome, "Trash");
    const char* home = std::getenv("HOME");
    if (home && *home)
        return Join(home, ".local/share/Trash");
    return {};
}

std::vector<std::string> MountTops(const std::string& mountInfoPath)
{
    std::vector<std::string> tops;
    std::ifstream in(mountInfoPath);
    std::string line;
    while (std::getline(in, line)) {
        // id parent major:minor root mount-point ...
        std::istringstream fields(line);
        std::string id, parent, device, root, mountPoint;
        if (fields >> id >> parent >> device >> root >> mountPoint)
            tops.push_back(DecodeMountField(mountPoint));
    }
    return tops;
}

std::vector<std::string> TrashFolders(const std::string& homeTrash, const std::vector<std::string>& mountTops,
                                      unsigned uid)
{
    std::vector<std::string> folders;
    auto add = [&folders](const std::string& folder) {
        if (std::find(folders.begin(), folders.end(), folder) == folders.end())
            folders.push_back(folder);
    };
    // The home trash is the user's own: a symbolic link there is the user's
    // choice and is followed; on shared volumes it never is.
    struct stat info {};
    if (!homeTrash.empty() && ::stat(homeTrash.c_str(), &info) == 0 && S_ISDIR(info.st_mode))
        add(homeTrash);
    const std::string uidText = std::to_string(uid);
    for (const std::string& top : mountTops) {
        const std::string shared = Join(top, ".Trash");
        struct stat sharedInfo {};
        // Another user could plant a link to anywhere: only a real folder
        // with the sticky bit is a shared trash.
        if (IsRealFolder(shared, &sharedInfo) && (sharedInfo.st_mode & S_ISVTX)) {
            const std::string mine = Join(shared, uidText);
            if (IsRealFolder(mine))
                add(mine);
        }
        const std::string own = Join(top, ".Trash-" + uidText);
        if (IsRealFolder(own))
            add(own);
    }
    return folders;
}

SystemOutcome EmptyTrashFolders(const std::vector<std::string>& folders)
{
    WalkRecord record;
    for (const std::string& folder : folders) {
        for (const char* part : {"files", "info", "expunged"})
            EmptyFolder(Join(folder, part), record);
        const std::string sizes = Join(folder, "directorysizes");
        if (::unlink(sizes.c_str()) != 0 && errno != ENOENT)
            NoteFailure(record, sizes, errno, "remove");
    }
    if (record.failures == 0)
        return SystemOutcome::Done();
    std::string reason = record.firstFailure;
    if (record.failures > 1)
        reason += " (and " + std::to_string(record.failures - 1) + " more)";
    return SystemOutcome::Failure(record.firstCode, reason);
}

SystemOutcome EmptyTrash()
{
    const std::string home = HomeTrashFolder();
    const std::vector<std::string> folders = TrashFolders(home, MountTops(), static_cast<unsigned>(::getuid()));
    return EmptyTrashFolders(folders);
}

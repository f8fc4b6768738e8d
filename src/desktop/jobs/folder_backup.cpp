#include "desktop/jobs/folder_backup.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <system_error>

namespace fs = std::filesystem;

namespace {

std::string Quoted(const fs::path& path)
{
    return "\"" + path.u8string() + "\"";
}

// Absolute, with links in the existing part resolved and no trailing
// separator, so that two spellings of one folder compare equal.
fs::path Normal(const fs::path& path, std::error_code& ec)
{
    fs::path normal = fs::weakly_canonical(fs::absolute(path, ec), ec).lexically_normal();
    if (!normal.has_filename() && normal.has_relative_path())
        normal = normal.parent_path();
    return normal;
}

bool IsInside(const fs::path& inner, const fs::path& outer)
{
    auto in = inner.begin();
    for (auto out = outer.begin(); out != outer.end(); ++out, ++in) {
        if (in == inner.end() || *in != *out)
            return false;
    }
    return in != inner.end();
}

// A name of our own in the file's destination folder, so that the rename that
// finishes the copy never crosses file systems.
fs::path TemporaryName(const fs::path& folder)
{
    static std::atomic<unsigned> counter{0};
    const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
    char name[64];
    std::snprintf(name, sizeof name, ".cdrl-%llx-%x.tmp", static_cast<unsigned long long>(ticks),
                  counter.fetch_add(1));
    return folder / name;
}

class TreeCopy {
public:
    TreeCopy(fs::path source, fs::path destination, const BackupCallbacks& callbacks, BackupResult& result)
        : m_source(std::move(source)), m_destination(std::move(destination)), m_callbacks(callbacks), m_result(result)
    {
    }

    void Run()
    {
        std::vector<fs::path> folders{fs::path()};
        while (!folders.empty()) {
            const fs::path relative = folders.back();
            folders.pop_back();
            for (const fs::path& name : List(relative)) {
                if (CopyItem(relative / name))
                    folders.push_back(relative / name);
            }
        }
    }

private:
    // The names in a source folder, sorted so that runs and logs are stable.
    std::vector<fs::path> List(const fs::path& relative)
    {
        std::vector<fs::path> names;
        std::error_code ec;
        fs::directory_iterator it(m_source / relative, ec);
        for (; !ec && it != fs::directory_iterator(); it.increment(ec))
            names.push_back(it->path().filename());
        if (ec)
            Fail(relative.empty() ? fs::path(".") : relative, "the folder cannot be read: " + ec.message());
        std::sort(names.begin(), names.end());
        return names;
    }

    // Copies one entry; true when it is a folder to descend into.
    bool CopyItem(const fs::path& relative)
    {
        const fs::path from = m_source / relative;
        const fs::path to = m_destination / relative;
        std::error_code ec;
        const fs::file_status status = fs::symlink_status(from, ec);
        if (ec) {
            Fail(relative, ec.message());
            return false;
        }
        if (fs::is_symlink(status)) {
            CopyLink(relative, from, to);
            return false;
        }
        if (fs::is_directory(status))
            return MakeFolder(relative, to);
        if (fs::is_regular_file(status)) {
            CopyFile(relative, from, to);
            return false;
        }
        Fail(relative, "not a regular file, folder or link");
        return false;
    }

    bool MakeFolder(const fs::path& relative, const fs::path& to)
    {
        std::error_code ec;
        const fs::file_status existing = fs::symlink_status(to, ec);
        if (fs::is_directory(existing))
            return true;
        if (fs::exists(existing)) {
            Fail(relative, "the destination has a file or link of that name where the folder should go");
            return false;
        }
        if (!fs::create_directory(to, ec) && ec) {
            Fail(relative, "the folder cannot be created: " + ec.message());
            return false;
        }
        return true;
    }

    void CopyFile(const fs::path& relative, const fs::path& from, const fs::path& to)
    {
        std::error_code ec;
        const std::uintmax_t size = fs::file_size(from, ec);
        const fs::file_time_type time = ec ? fs::file_time_type() : fs::last_write_time(from, ec);
        if (ec) {
            Fail(relative, ec.message());
            return;
        }
        const fs::file_status existing = fs::symlink_status(to, ec);
        if (fs::is_directory(existing)) {
            Fail(relative, "the destination has a folder of that name");
            return;
        }
        if (fs::is_regular_file(existing)) {
            std::error_code sizeError;
            std::error_code timeError;
            const bool sameSize = fs::file_size(to, sizeError) == size;
            const bool sameTime = fs::last_write_time(to, timeError) == time;
            if (!sizeError && !timeError && sameSize && sameTime) {
                ++m_result.unchanged;
                return;
            }
        }
        const fs::path temporary = TemporaryName(to.parent_path());
        std::string step;
        if (!fs::copy_file(from, temporary, fs::copy_options::overwrite_existing, ec))
            step = "copying";
        else if (fs::last_write_time(temporary, time, ec), ec)
            step = "setting the modification time";
        else if (fs::rename(temporary, to, ec), ec)
            step = "replacing the old copy";
        if (!step.empty()) {
            std::error_code ignored;
            fs::remove(temporary, ignored);
            Fail(relative, step + ": " + ec.message());
            return;
        }
        Copied(relative);
    }

    // A link is copied as a link with the same target text; what it points
    // to is never followed, so a link to a parent folder cannot loop.
    void CopyLink(const fs::path& relative, const fs::path& from, const fs::path& to)
    {
        std::error_code ec;
        const fs::path target = fs::read_symlink(from, ec);
        if (ec) {
            Fail(relative, ec.message());
            return;
        }
        const fs::file_status existing = fs::symlink_status(to, ec);
        if (fs::is_symlink(existing)) {
            std::error_code readError;
            if (fs::read_symlink(to, readError) == target && !readError) {
                ++m_result.unchanged;
                return;
            }
        } else if (fs::is_directory(existing)) {
            Fail(relative, "the destination has a folder of that name");
            return;
        }
        const fs::path temporary = TemporaryName(to.parent_path());
        std::error_code kindError;
        // Windows makes a difference between links to folders and to files.
        if (fs::is_directory(fs::status(from, kindError)))
            fs::create_directory_symlink(target, temporary, ec);
        else
            fs::create_symlink(target, temporary, ec);
        if (!ec)
            fs::rename(temporary, to, ec);
        if (ec) {
            std::error_code ignored;
            fs::remove(temporary, ignored);
            Fail(relative, "the link cannot be created: " + ec.message());
            return;
        }
        Copied(relative);
    }

    void Copied(const fs::path& relative)
    {
        m_result.copied.push_back(relative);
        if (m_callbacks.copied)
            m_callbacks.copied(relative);
    }

    void Fail(const fs::path& relative, const std::string& reason)
    {
        if (m_result.failed++ == 0) {
            m_result.firstFailure = relative;
            m_result.firstFailureReason = reason;
        }
        if (m_callbacks.failed)
            m_callbacks.failed(relative, reason);
    }

    fs::path m_source;
    fs::path m_destination;
    const BackupCallbacks& m_callbacks;
    BackupResult& m_result;
};

}  // namespace

BackupResult BackupFolderTree(const fs::path& source, const fs::path& destination, const BackupCallbacks& callbacks)
{
    BackupResult result;
    if (source.empty()) {
        result.refusal = "the source folder is not set";
        return result;
    }
    if (destination.empty()) {
        result.refusal = "the destination folder is not set";
        return result;
    }
    std::error_code ec;
    const fs::file_status status = fs::status(source, ec);
    if (!fs::exists(status)) {
        result.refusal = "the source folder " + Quoted(source) + " does not exist";
        return result;
    }
    if (!fs::is_directory(status)) {
        result.refusal = "the source " + Quoted(source) + " is not a folder";
        return result;
    }
    std::error_code sourceError;
    std::error_code destinationError;
    const fs::path from = Normal(source, sourceError);
    const fs::path to = Normal(destination, destinationError);
    if (sourceError || destinationError) {
        result.refusal = "the folders cannot be resolved: " + (sourceError ? sourceError : destinationError).message();
        return result;
    }
    if (from == to) {
        result.refusal = "the source and the destination are the same folder " + Quoted(from);
        return result;
    }
    if (IsInside(to, from)) {
        result.refusal = "the destination " + Quoted(to) + " is inside the source " + Quoted(from) +
                         "; the copy would never end";
        return result;
    }
    // Copying into a folder that holds the source could overwrite the source.
    if (IsInside(from, to)) {
        result.refusal = "the source " + Quoted(from) + " is inside the destination " + Quoted(to) +
                         "; the copy could overwrite the source";
        return result;
    }
    fs::create_directories(to, ec);
    std::error_code kindError;
    if (ec || !fs::is_directory(to, kindError)) {
        result.refusal = "the destination folder " + Quoted(to) + " cannot be created" +
                         (ec ? ": " + ec.message() : std::string());
        return result;
    }
    try {
        TreeCopy(from, to, callbacks, result).Run();
    } catch (const std::exception& error) {
        // Only allocation failures can get here; every file step reports
        // through error codes.
        result.failed++;
        if (result.firstFailure.empty()) {
            result.firstFailure = ".";
            result.firstFailureReason = error.what();
        }
    }
    return result;
}

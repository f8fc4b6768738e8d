#pragma once
// Copies the contents of one folder tree into another, only what changed
// since it was last copied there. A file counts as changed when the
// destination has no file of that name, or its size or modification time
// differs from the source's; a copied file gets the source's modification
// time, so an unchanged file is skipped next time. Each file is written under
// a temporary name in its destination folder and renamed over the old copy,
// so a copy cut short never leaves a half-written file under the real name.
// Symbolic links are copied as links (their target text), never followed.
// The source is only read.

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

struct BackupResult {
    // Set when the backup was refused before anything was written: a missing
    // source, the same folder twice, one folder inside the other.
    std::string refusal;
    // Paths relative to the source, in the order they were copied (files and
    // links; folders are created silently).
    std::vector<std::filesystem::path> copied;
    std::size_t unchanged = 0;
    // Items that could not be copied; the first one and why.
    std::size_t failed = 0;
    std::filesystem::path firstFailure;
    std::string firstFailureReason;

    bool Succeeded() const { return refusal.empty() && failed == 0; }
};

struct BackupCallbacks {
    // Called after each file or link was copied (relative path).
    std::function<void(const std::filesystem::path&)> copied;
    // Called for each item that could not be copied (relative path, reason).
    std::function<void(const std::filesystem::path&, const std::string&)> failed;
};

BackupResult BackupFolderTree(const std::filesystem::path& source, const std::filesystem::path& destination,
                              const BackupCallbacks& callbacks = {});

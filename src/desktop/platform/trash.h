#pragma once
// Emptying the user's trash (the recycle bin) on every mounted volume.

#include <string>
#include <vector>

#include "desktop/platform/session_control.h"

// Empties every trash of the user: the home one and the one on each mounted
// volume. A trash that is missing or already empty counts as emptied. The
// first failure stops nothing: every trash is still emptied as far as
// possible, and the outcome names the first file that could not be removed.
SystemOutcome EmptyTrash();

// The FreeDesktop trash rules, used by the Linux implementation.
// The trash folders of one user: the home trash and, for each mount point
// in `mountTops`, "$top/.Trash/$uid" (only when "$top/.Trash" is a real
// folder with the sticky bit) and "$top/.Trash-$uid". Only folders that
// exist are listed; the home trash first, no folder twice.
std::vector<std::string> TrashFolders(const std::string& homeTrash, const std::vector<std::string>& mountTops,
                                      unsigned uid);
// Empties the given trash folders (their "files", "info" and "expunged"
// contents and the "directorysizes" file), never following a symbolic link.
SystemOutcome EmptyTrashFolders(const std::vector<std::string>& folders);
// The mount points listed in /proc/self/mountinfo (or the given file), with
// the octal escapes of that file decoded.
std::vector<std::string> MountTops(const std::string& mountInfoPath = "/proc/self/mountinfo");
// "$XDG_DATA_HOME/Trash", or "$HOME/.local/share/Trash"; empty without either.
std::string HomeTrashFolder();

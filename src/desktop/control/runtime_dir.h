#pragma once
// The per-user runtime folder of the program: it holds the instance lock and
// the control socket. Candidates, in order:
//   1. $XDG_RUNTIME_DIR/cadrelle, or cadrelle-<uid> under $TMPDIR (or /tmp)
//      when the variable is unset;
//   2. <$XDG_CACHE_HOME or ~/.cache>/cadrelle/run-<host>, for when another
//      user took the first one (a shared temporary folder).
// A candidate is trusted only when it is a folder (not a symbolic link) of
// this user that nobody else can write, and its instance.lock, when present,
// is a plain file of this user. An untrusted candidate is passed over, never
// repaired, used or emptied; the instance and its callers pass over the same
// ones, so they meet in the same folder.

#include <string>
#include <vector>

struct RuntimeDirChoice {
    std::string path;                // the chosen folder; empty when none can be trusted
    std::vector<std::string> notes;  // candidates passed over and why, unsafe parents
};

std::vector<std::string> RuntimeDirCandidates();
// Why `dir` cannot be trusted; empty when it can, or does not exist
// (`exists` tells which).
std::string RuntimeDirProblem(const std::string& dir, bool* exists);
// The first trusted candidate, created (mode 0700) when missing and
// `create`. Without `create`, a missing candidate is chosen as it is.
RuntimeDirChoice ChooseRuntimeDir(bool create);
// ChooseRuntimeDir(false).path: where the running instance keeps its files.
std::string RuntimeDirPath();
std::string ControlSocketPath(const std::string& dir);
std::string InstanceLockPath(const std::string& dir);

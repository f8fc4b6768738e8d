#pragma once
// The per-user runtime folder of the program: $XDG_RUNTIME_DIR/cadrelle, or
// a private folder under the temporary folder named with the user id when
// the variable is unset. It holds the instance lock and the control socket.

#include <string>

// The folder's path (nothing is created).
std::string RuntimeDirPath();
// Creates the folder with mode 0700 when missing and checks that it is ours
// and private; false with a reason otherwise (someone else's folder under
// /tmp must never be trusted).
bool EnsureRuntimeDir(std::string* error);
std::string ControlSocketPath();
std::string InstanceLockPath();

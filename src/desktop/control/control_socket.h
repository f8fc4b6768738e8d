#pragma once
// What both ends of the control socket share: its address, the checks of the
// socket file and of the process at the other end, and reading what the
// other end sends within a time limit. POSIX only (the Windows side uses a
// named pipe).

#include <chrono>
#include <functional>
#include <string>

#include <sys/types.h>
#include <sys/un.h>

// The address of the socket at `path`; false when the path is too long for
// a Unix socket.
bool ControlSocketAddress(const std::string& path, sockaddr_un& address);

// Why the file at `path` cannot be this user's control socket (not a socket,
// a symbolic link, someone else's, writable by others); empty when it can,
// or does not exist (`exists` tells which).
std::string ControlSocketProblem(const std::string& path, bool* exists);

// The user and process ids of the other end of a connected Unix socket, as
// the kernel recorded them; false when it cannot tell.
bool PeerIds(int fd, uid_t& uid, pid_t& pid);

// Appends what arrives on `fd` to `text` until the other end shuts its side,
// `complete(text)` says enough came, or `limit` has passed. False when the
// time ran out or reading failed.
bool ReadWithin(int fd, std::string& text, std::chrono::milliseconds limit,
                const std::function<bool(const std::string&)>& complete);

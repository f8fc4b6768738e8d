#pragma once
// What both ends of the control socket share: its address, and reading what
// the other end sends within a time limit.

#include <chrono>
#include <functional>
#include <string>

#include <sys/un.h>

// The address of ControlSocketPath(); false when the path is too long for a
// Unix socket.
bool ControlSocketAddress(sockaddr_un& address);

// Appends what arrives on `fd` to `text` until the other end shuts its side,
// `complete(text)` says enough came, or `limit` has passed. False when the
// time ran out or reading failed.
bool ReadWithin(int fd, std::string& text, std::chrono::milliseconds limit,
                const std::function<bool(const std::string&)>& complete);

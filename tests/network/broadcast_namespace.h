#pragma once
// Broadcast tests run only in a child of the test program that was started
// under `unshare -rn` (a user and network namespace of its own, in which
// only its own loopback exists).

// argv[1] of the child; argv[2] is the inode of the parent's namespace.
constexpr const char* kNamespaceChildFlag = "--netns-child";

// Registers the tests that broadcast; only the verified child calls it.
void RegisterNamespaceBroadcastTests();

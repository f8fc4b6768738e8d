// The network tests' own main: besides the usual run, the program can be the
// child that runs the broadcast tests inside a private network namespace
// (see broadcast_test.cpp), which only it may do.

#include <cstdlib>
#include <cstring>
#include <iostream>

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "loopback_peers.h"
#include "desktop/jobs/network_jobs.h"

int main(int argc, char** argv)
{
    const bool child = argc >= 3 && std::strcmp(argv[1], kNamespaceChildFlag) == 0;
    if (child) {
        // Broadcasts leave this process only when it provably runs in a
        // network namespace other than the one it was started from.
        struct stat own {};
        const unsigned long parent = std::strtoul(argv[2], nullptr, 10);
        if (::stat("/proc/self/ns/net", &own) != 0 || own.st_ino == parent || parent == 0) {
            std::cerr << "not inside a private network namespace; no broadcast is sent" << std::endl;
            return 3;
        }
        argv[2] = argv[0];  // drop the flag and the inode for gtest
        argc -= 2;
        argv += 2;
    }
    // wxBase is started by the harness's global environment.
    ::testing::InitGoogleTest(&argc, argv);
    RegisterNetworkJobActions();
    if (child) {
        RegisterNamespaceBroadcastTests();
        ::testing::GTEST_FLAG(filter) = "InNamespace.*";
    }
    return RUN_ALL_TESTS();
}

// The network tests' own main: besides the usual run, the program can be the
// child that runs the broadcast tests inside a private network namespace
// (see broadcast_test.cpp), which only it may do.

#include <cstring>
#include <iostream>

#include <gtest/gtest.h>

#include "loopback_peers.h"
#include "desktop/jobs/network_jobs.h"

int main(int argc, char** argv)
{
    const bool child = argc >= 3 && std::strcmp(argv[1], kNamespaceChildFlag) == 0;
    if (child) {
        // Broadcasts leave this process only when it provably runs in a
        // network namespace other than the one it was started from.
        const std::string parent = argv[2];
        if (parent.empty() || NetworkNamespace().empty() || NetworkNamespace() == parent) {
            std::cerr << "not inside a private network namespace; no broadcast is sent" << std::endl;
            return 3;
        }
        argv[2] = argv[0];  // drop the flag and the namespace for gtest
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

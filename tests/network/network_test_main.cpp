// Besides the usual run, this program can be the child that runs the
// broadcast tests inside a private network namespace (broadcast_test.cpp).

#include <cstring>
#include <iostream>

#include "desktop/jobs/network_jobs.h"
#include "desktop/jobs/web_refresh.h"
#include "loopback_peers.h"

int main(int argc, char** argv)
{
    const bool child = argc >= 3 && std::strcmp(argv[1], kNamespaceChildFlag) == 0;
    if (child) {
        // Broadcasts leave only a process provably in a namespace other than
        // the one it was started from.
        if (!*argv[2] || NetworkNamespace().empty() || NetworkNamespace() == argv[2]) {
            std::cerr << "not inside a private network namespace; no broadcast is sent" << std::endl;
            return 3;
        }
        argv[2] = argv[0];
        argc -= 2;
        argv += 2;
    }
    ::testing::InitGoogleTest(&argc, argv);
    RegisterNetworkJobActions(HarnessContext().Actions(), std::make_shared<WebRequests>());
    if (child) {
        RegisterNamespaceBroadcastTests();
        ::testing::GTEST_FLAG(filter) = "InNamespace.*";
    }
    return RUN_ALL_TESTS();
}

#pragma once
// Five jobs of three kinds, one disabled; Interval and Cron triggers that do
// not fire during a test (03:00, 1 January).

#include "gui_test_support.h"

namespace frametest {

inline void WriteExampleData(const wxString& appDir)
{
    using guitest::JobXml;
    using guitest::TriggerXml;
    guitest::WriteData(appDir, JobXml(0, 0, "Morning coffee", true, 0, "Time for coffee $ 0") +
                                   JobXml(1, 10, "Ping backup box", true, 1, "hello $ 0 $ 0 $ 127.0.0.1 $ 9") +
                                   JobXml(2, 10, "Old notice", false, 2, "bye $ 0 $ 0 $ 127.0.0.1 $ 9") +
                                   JobXml(12, 0, "Stretch", true, 3, "Stand up $ 0") +
                                   JobXml(21, 1, "Open news", true, 4, "https://example.org/news") +
                                   TriggerXml(0, 2, "0 0 3 * * ?") + TriggerXml(1, 11, "0 0 3 * * ?") +
                                   TriggerXml(2, 2, "0 0 3 * * ?") + TriggerXml(3, 11, "0 0 0 1 1 ?") +
                                   TriggerXml(4, 2, "0 0 0 1 1 ?"));
}

}  // namespace frametest

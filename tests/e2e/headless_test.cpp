// The headless scheduler as a child process on the real clock: a reminder and a Send UDP MSG job with a
// chained job every 2 seconds, datagrams observed on loopback; SIGTERM saves.

#include <chrono>
#include <csignal>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <wx/filename.h>

#include "core/data/scheduler_data.h"
#include "core/history/history_db.h"
#include "core/history/history_query.h"
#include "core/scheduler.h"
#include "e2e_support.h"

TEST(Headless, FiresOnTimeChainsAndSavesTheAdvancedTimesOnSigterm)
{
    const int fd = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in addr{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    socklen_t length = sizeof addr;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &length);
    const std::string info = "0 $ 0 $ 127.0.0.1 $ " + std::to_string(ntohs(addr.sin_port));

    TempDir dir;
    const std::string home = dir.File("home").utf8_string();
    WriteFileBytes(dir.File("app/data/data1.xml"),
                   DataFile(Job(0, 0, "Tea", true, 0, "1", "", "Drink tea $ 1") +
                                Job(1, 10, "tick", true, 500, "2", "2", "tick $ " + info) +
                                Job(2, 10, "tock", false, 0, "", "", "tock $ " + info),
                            IntervalTrigger(1, "0/2 * * * * ?") + IntervalTrigger(2, "0/2 * * * * ?")));
    ChildProcess program;
    ASSERT_TRUE(program.Start({CADRELLE_BINARY, "--headless", "--app-dir", dir.File("app").utf8_string()}, home + "/out.txt",
                              ProgramEnvironment(home)));

    std::vector<std::pair<std::string, std::int64_t>> arrivals;  // payload, wall clock ms
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(9000);
    while (std::chrono::steady_clock::now() < end) {
        pollfd pfd{fd, POLLIN, 0};
        char buffer[256];
        const ssize_t n = ::poll(&pfd, 1, 100) > 0 ? ::recv(fd, buffer, sizeof buffer, 0) : 0;
        if (n > 0)
            arrivals.emplace_back(std::string(buffer, static_cast<std::size_t>(n)),
                                  std::chrono::duration_cast<std::chrono::milliseconds>(
                                      std::chrono::system_clock::now().time_since_epoch()).count());
    }
    EXPECT_EQ(program.Stop(SIGTERM), 0);
    ::close(fd);

    int ticks = 0;
    for (std::size_t i = 0; i < arrivals.size(); ++i) {
        const auto& [payload, ms] = arrivals[i];
        if (payload != "tick")
            continue;
        ++ticks;
        const std::int64_t phase = ms % 2000;  // 0 at an even second
        // Fired inside the 200 ms before the moment; the datagram may come a little later on a busy machine.
        EXPECT_TRUE((phase == 0 ? 0 : 2000 - phase) <= 220 || phase < 150) << "tick " << ticks << " at " << phase;
        // The disabled chained job follows ~500 ms later (unless listening ended in between).
        if (i + 1 < arrivals.size()) {
            const std::int64_t gap = arrivals[i + 1].second - ms;
            EXPECT_TRUE(arrivals[i + 1].first == "tock" && gap >= 450 && gap <= 900) << arrivals[i + 1].first << " " << gap;
        }
    }
    EXPECT_GE(ticks, 3);

    const std::string log = LogText(dir.File("app"));
    for (const char* line : {">>> Cadrelle Start >>>", "->> [JID_0, ThreadID_",
                             // No window to go to: logged by the job thread, written by the main thread.
                             "### [JID_0] Reminder (important): Drink tea", "<<- [JID_0, ThreadID_",
                             "SaveSchedulerData(true) Completed", "SaveSettingParam() Completed",
                             "<<< Cadrelle End <<<"})
        EXPECT_NE(log.find(line), std::string::npos) << line << " in\n" << log;
    EXPECT_TRUE(wxFileName::FileExists(dir.File("home/.config/Cadrelle/Cadrelle.conf")));

    Scheduler saved(HarnessContext(), dir.File("app"));
    LoadSchedulerData(saved, false);
    ASSERT_EQ(saved.Triggers().size(), 2u);
    const wxDateTime prev = saved.Triggers()[0]->GetPrevFire();
    EXPECT_GT(prev.GetYear(), 1999);
    EXPECT_EQ(prev.GetSecond() % 2, 0);
    EXPECT_LT((wxDateTime::Now() - prev).GetSeconds().ToLong(), 10);

    // Each run is in the history with what asked for it and what it did.
    HistoryOpenResult history = OpenHistoryDb(dir.File("app/history.db").utf8_string(), true);
    ASSERT_TRUE(history.db) << history.error;
    const std::vector<RunRecord> ticks_ = QueryRuns(history.db.get(), {1, OutcomeFilter::All, std::nullopt, "", -1});
    const std::vector<RunRecord> tocks = QueryRuns(history.db.get(), {2, OutcomeFilter::All, std::nullopt, "", -1});
    ASSERT_GE(ticks_.size(), 3u);
    ASSERT_FALSE(tocks.empty());
    for (std::size_t i = 0; i < ticks_.size(); ++i) {
        const RunRecord& r = ticks_[i];
        // The newest run may have been waiting for its moment when SIGTERM
        // came: not run, because the program ended.
        if (i == 0 && r.outcome == RunOutcome::NotRun) {
            EXPECT_EQ(r.reason, NotRunReason::ProgramEnded);
            continue;
        }
        EXPECT_EQ(std::make_tuple(r.origin, r.tid, r.triggerKind, r.outcome, r.description),
                  std::make_tuple(RunOrigin::Trigger, 2, 2, RunOutcome::Succeeded, std::string("tick")));
        EXPECT_EQ(r.details, "4 bytes sent to 127.0.0.1:" + std::to_string(ntohs(addr.sin_port)));
    }
    EXPECT_EQ(std::make_tuple(tocks[0].origin, tocks[0].sourceJid), std::make_tuple(RunOrigin::Chain, 1));
}

// Preferences that cannot be read are kept aside before the run writes any,
// and standard error says so.
TEST(Headless, UnreadablePreferencesAreKeptAndTold)
{
    TempDir dir;
    const std::string home = dir.File("home").utf8_string();
    const wxString conf = dir.File("home/.config/Cadrelle/Cadrelle.conf");
    const std::string original = "\xFF\xFE" "ui_language=en\n";
    WriteFileBytes(conf, original);
    ChildProcess program;
    ASSERT_TRUE(program.Start({CADRELLE_BINARY, "--headless", "--app-dir", dir.File("app").utf8_string()},
                              home + "/out.txt", ProgramEnvironment(home)));
    WaitUntil([&] { return ReadFileBytes(wxString::FromUTF8(home + "/out.txt")).find("preferences") != std::string::npos; },
              5000);
    EXPECT_EQ(program.Stop(SIGTERM), 0);
    const std::string out = ReadFileBytes(wxString::FromUTF8(home + "/out.txt"));
    EXPECT_NE(out.find("could not read its preferences file " + conf.utf8_string() + " as written (it is not UTF-8 text)"),
              std::string::npos) << out;
    wxArrayString kept;
    wxDir::GetAllFiles(dir.File("home/.config/Cadrelle"), &kept, "Cadrelle.conf.bad-*", wxDIR_FILES);
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(ReadFileBytes(kept[0]), original);
}

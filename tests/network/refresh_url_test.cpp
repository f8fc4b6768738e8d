// Refresh URL against an HTTP server on loopback.

#include "desktop/jobs/network_jobs.h"
#include "desktop/jobs/web_refresh.h"
#include "loopback_peers.h"

namespace {

wxString Url(const LoopbackServer& server, const char* path)
{
    return "http://127.0.0.1:" + PortText(server.Port()) + path;
}

}  // namespace

using RefreshUrlJob = NetworkJobTest;

TEST_F(RefreshUrlJob, SendsBothHeadersFollowsRedirectsAndLogsEachRequest)
{
    LoopbackServer server(true);
    RunJob(NJobTypeRefreshUrl, {Url(server, "/page?x=1")}, 5);
    RunJob(NJobTypeRefreshUrl, {Url(server, "/moved")}, 6);
    const std::vector<std::string> heads = server.Received(3);
    ASSERT_EQ(heads.size(), 3u);
    EXPECT_EQ(heads[0].rfind("GET /page?x=1 HTTP/1.1\r\n", 0), 0u) << heads[0];
    EXPECT_NE(heads[0].find("\r\ncontent-type: text/html; charset=utf-8\r\n"), std::string::npos) << heads[0];
    EXPECT_NE(heads[0].find("\r\nX-UA-Compatible: IE=edge,chrome=1\r\n"), std::string::npos) << heads[0];
    EXPECT_EQ(heads[2].rfind("GET /final HTTP/1.1\r\n", 0), 0u) << heads[2];

    // One "Still Active" per request, however many answers it took.
    const std::vector<wxString> lines = log.Lines();
    ASSERT_EQ(lines.size(), 6u);
    long id = -1;
    lines[0].AfterFirst('_').AfterFirst('_').BeforeFirst(']').ToLong(&id);
    ASSERT_GT(id, 0);
    for (int r = 0; r < 2; ++r) {
        const wxString tag = wxString::Format("[JID_%d, WebReqID_%ld] ", 5 + r, id + r);
        EXPECT_TRUE(lines[3 * r].EndsWith("--- " + tag + "Start Web Request >>>>>>")) << lines[3 * r];
        EXPECT_TRUE(lines[3 * r + 1].EndsWith("--- " + tag + "Still Active ......"));
        EXPECT_TRUE(lines[3 * r + 2].EndsWith("<<- " + tag + "Completed <<<<<<"));
    }
}

TEST_F(RefreshUrlJob, FailuresAreLoggedAsFailed)
{
    LoopbackServer server(true);
    const std::pair<wxString, const char*> cases[] = {
        {"http://127.0.0.1:" + PortText(ClosedLoopbackPort()) + "/", "Failed: "},
        {Url(server, "/missing"), "Failed: Error: Not Found (404) <<<<<<"},
        {Url(server, "/secret"), "Failed: Error: Unauthorized (401) <<<<<<"},
        {"file:///etc/hostname", "Failed: "},  // only the web: no local files
        {"", "Failed: "},
        {"http://bad host name/", "Failed: "},
    };
    for (const auto& [url, failure] : cases) {
        SCOPED_TRACE(url);
        RunReport report;
        RunJob(NJobTypeRefreshUrl, {url}, 9, "Test job", HarnessContext(), &report);
        EXPECT_EQ(report.outcome, RunOutcome::Failed);
        ASSERT_FALSE(log.Lines().empty());
        EXPECT_TRUE(log.Lines().back().Contains(wxString::FromUTF8(report.details))) << report.details;
        EXPECT_TRUE(log.Lines().back().Contains("<<- [JID_9, WebReqID_")) << log.Lines().back();
        EXPECT_TRUE(log.Lines().back().Contains(failure)) << log.Lines().back();
    }
    EXPECT_FALSE(log.Has("Completed"));
    EXPECT_EQ(log.Matching("Unauthorized ......").size(), 1u);
}

TEST_F(RefreshUrlJob, RunsOnAWorkerThreadAndCanBeCancelled)
{
    LoopbackServer server(true);
    // Requests of their own, so that cancelling reaches this one alone.
    SessionContext context;
    const auto web = std::make_shared<WebRequests>();
    RegisterNetworkJobActions(context.Actions(), web);
    std::atomic<bool> done{false};
    std::thread worker([&] {
        RunJob(NJobTypeRefreshUrl, {Url(server, "/silent")}, 8, "Test job", context);
        done = true;
    });
    ASSERT_TRUE(WaitUntil([&] { return server.heads == 1; }, 5000));
    EXPECT_FALSE(done.load());
    web->CancelAll();
    EXPECT_TRUE(WaitUntil([&] { return done.load(); }, 5000));
    worker.join();
    // The worker's lines reach the log once this (main) thread flushes.
    EXPECT_TRUE(log.Has("<<- [JID_8, WebReqID_"));
    EXPECT_TRUE(log.Has("] Cancelled <<<<<<"));
    EXPECT_FALSE(log.Has("Failed"));
    // A request started after the cancel is not affected by it.
    RunJob(NJobTypeRefreshUrl, {Url(server, "/after")}, 8);
    EXPECT_TRUE(log.Has("Completed <<<<<<"));
}

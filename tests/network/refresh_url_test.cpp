// Refresh URL against an HTTP server on loopback; TLS only in its failures,
// since no trusted server can be reached from a test.

#include <thread>

#include <gtest/gtest.h>

#include "desktop/jobs/web_refresh.h"
#include "loopback_peers.h"

namespace {


wxString Url(const HttpServer& server, const char* path)
{
    return wxString::Format("http://127.0.0.1:%u%s", static_cast<unsigned>(server.Port()), path);
}

// The number after "WebReqID_" in a line.
int RequestId(const wxString& line)
{
    long id = -1;
    line.AfterFirst('_').AfterFirst('_').BeforeFirst(']').ToLong(&id);
    return static_cast<int>(id);
}

bool HasHeader(const std::string& head, const std::string& line)
{
    return head.find("\r\n" + line + "\r\n") != std::string::npos;
}

}  // namespace

using RefreshUrlJob = NetworkJobTest;

TEST_F(RefreshUrlJob, SendsBothHeadersFollowsRedirectsAndLogsEachRequest)
{
    HttpServer server;
    RunJob(NJobTypeRefreshUrl, {Url(server, "/page?x=1")}, 5);
    RunJob(NJobTypeRefreshUrl, {Url(server, "/moved")}, 6);
    const std::vector<std::string> heads = server.Received(3);
    ASSERT_EQ(heads.size(), 3u);
    EXPECT_EQ(heads[0].rfind("GET /page?x=1 HTTP/1.1\r\n", 0), 0u) << heads[0];
    EXPECT_TRUE(HasHeader(heads[0], "content-type: text/html; charset=utf-8")) << heads[0];
    EXPECT_TRUE(HasHeader(heads[0], "X-UA-Compatible: IE=edge,chrome=1")) << heads[0];
    EXPECT_EQ(heads[2].rfind("GET /final HTTP/1.1\r\n", 0), 0u) << heads[2];

    // One "Still Active" per request, however many answers it took.
    const std::vector<wxString> lines = log.Lines();
    ASSERT_EQ(lines.size(), 6u);
    const int id = RequestId(lines[0]);
    ASSERT_GT(id, 0);
    for (int request = 0; request < 2; ++request) {
        const wxString tag = wxString::Format("[JID_%d, WebReqID_%d] ", 5 + request, id + request);
        EXPECT_TRUE(lines[3 * request].EndsWith("--- " + tag + "Start Web Request >>>>>>")) << lines[3 * request];
        EXPECT_TRUE(lines[3 * request + 1].EndsWith("--- " + tag + "Still Active ......"));
        EXPECT_TRUE(lines[3 * request + 2].EndsWith("<<- " + tag + "Completed <<<<<<"));
    }
}

TEST_F(RefreshUrlJob, FailuresAreLoggedAsFailed)
{
    HttpServer server;
    const struct {
        wxString url;
        const char* failure;
    } cases[] = {
        {wxString::Format("http://127.0.0.1:%u/", static_cast<unsigned>(ClosedLoopbackPort())), "Failed: "},
        {Url(server, "/missing"), "Failed: Error: Not Found (404) <<<<<<"},
        {Url(server, "/secret"), "Failed: Error: Unauthorized (401) <<<<<<"},
        // TLS spoken to a plain-HTTP peer.
        {wxString::Format("https://127.0.0.1:%u/", static_cast<unsigned>(server.Port())), "Failed: "},
        // Only the web: no local files.
        {"file:///etc/hostname", "Failed: "},
        {"", "Failed: "},
        {"http://bad host name/", "Failed: "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.url);
        const std::size_t before = log.Lines().size();
        RunJob(NJobTypeRefreshUrl, {c.url}, 9);
        const std::vector<wxString> lines = log.Lines();
        ASSERT_GT(lines.size(), before);
        EXPECT_TRUE(lines.back().Contains("<<- [JID_9, WebReqID_")) << lines.back();
        EXPECT_TRUE(lines.back().Contains(c.failure)) << lines.back();
    }
    EXPECT_FALSE(log.Has("Completed"));
    EXPECT_EQ(log.Matching("Unauthorized ......").size(), 1u);
}

TEST_F(RefreshUrlJob, RunsOnAWorkerThreadAndCanBeCancelled)
{
    HttpServer server;
    std::atomic<bool> done{false};
    std::thread worker([&] {
        RunJob(NJobTypeRefreshUrl, {Url(server, "/silent")}, 8);
        done = true;
    });
    ASSERT_TRUE(WaitUntil([&] { return server.HeadsSeen() == 1; }, 5000));
    EXPECT_FALSE(done.load());
    CancelWebRequests();
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

TEST_F(RefreshUrlJob, SelfSignedCertificateIsRefused)
{
    TempDir dir;
    const std::string key = dir.File("key.pem").utf8_string();
    const std::string cert = dir.File("cert.pem").utf8_string();
    ASSERT_EQ(RunProcess({"openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "1", "-subj",
                          "/CN=127.0.0.1", "-keyout", key, "-out", cert})
                  .status,
              0);
    const wxString port = PortText(ClosedLoopbackPort());
    const wxString out = dir.File("server.out");
    ChildProcess server;
    ASSERT_TRUE(server.Start({"openssl", "s_server", "-www", "-accept", "127.0.0.1:" + port.ToStdString(), "-cert", cert,
                              "-key", key},
                             out.utf8_string()));
    ASSERT_TRUE(WaitUntil([&] { return ReadFileBytes(out).find("ACCEPT") != std::string::npos; })) << "no server";
    RunJob(NJobTypeRefreshUrl, {"https://127.0.0.1:" + port + "/"}, 2);
    const std::vector<wxString> failed = log.Matching("Failed: ");
    ASSERT_EQ(failed.size(), 1u);
    EXPECT_TRUE(failed[0].Lower().Contains("certificate")) << failed[0];
    EXPECT_FALSE(log.Has("Completed"));
}

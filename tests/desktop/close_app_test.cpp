// Close App against real windows. CTest runs these tests twice: through
// openbox (EWMH), and with no window manager (WM_DELETE_WINDOW sent by us).

#include "desktop/jobs/close_app_job.h"
#include "desktop/platform/window_closer.h"
#include "x11_test_support.h"

namespace {

class CloseAppTest : public DisplayJobTest {
protected:
    // Managed before the test goes on when a window manager runs.
    std::unique_ptr<TestWindow> Open(const std::string& title, bool netWmName = true, bool acceptsDelete = true)
    {
        auto window = std::make_unique<TestWindow>(
            TestWindowOptions{title, 0, 0, 200, 100, 0x808080, false, netWmName, acceptsDelete});
        EXPECT_TRUE(!wm || window->WaitUntilManaged()) << title;
        return window;
    }

    const bool wm = std::getenv("CADRELLE_NO_WM") == nullptr;  // the launcher starts openbox then
};

TEST_F(CloseAppTest, AsksTheFirstWindowWithEachExactTitleAndNamesTheMissingOnes)
{
    auto target = Open("Cadrelle target");
    auto longer = Open("Cadrelle target 2");
    auto otherCase = Open("cadrelle TARGET");
    auto twin = Open("Twin");
    auto laterTwin = Open("Twin");
    auto oldStyle = Open("Plain name", false);       // WM_NAME only
    auto utf8 = Open("Second \xc3\xa9t\xc3\xa9 window");  // matched as UTF-8

    const CloseRequestOutcome outcome = RequestWindowClose("Cadrelle target");
    EXPECT_EQ(outcome.result, CloseRequestResult::Sent);
    EXPECT_TRUE(outcome.detail.Contains(wm ? "_NET_CLOSE_WINDOW" : "WM_DELETE_WINDOW")) << outcome.detail;
    RunJob(NJobTypeCloseApp, {wxString::FromUTF8("\"No such window\"  \"Second \xc3\xa9t\xc3\xa9 window\" "
                                                 "\"Plain name\" \"Twin\"")});

    for (TestWindow* asked : {target.get(), twin.get(), oldStyle.get(), utf8.get()})
        EXPECT_TRUE(asked->PumpUntil([&] { return asked->deleteRequests == 1; }));
    for (TestWindow* spared : {longer.get(), otherCase.get(), laterTwin.get()}) {
        spared->PumpFor(100);
        EXPECT_EQ(spared->deleteRequests, 0);
    }
    const std::vector<RecordedMessage> shown = messages.All();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text, "Window title:\nNo such window\nnot exist.");
    EXPECT_EQ(shown[0].caption, "Message");
    EXPECT_TRUE(log.Has(wxString::FromUTF8("[JID_7] Asked \"Second \xc3\xa9t\xc3\xa9 window\" to close")));
}

TEST_F(CloseAppTest, AWindowThatCannotBeAskedIsReportedNotKilled)
{
    auto window = Open("Stubborn", true, false);
    RunJob(NJobTypeCloseApp, {"\"Stubborn\""});
    const std::vector<std::string> boxes = messages.Boxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_NE(boxes[0].find("Could not ask \"Stubborn\" to close"), std::string::npos) << boxes[0];
    // Still there and still answering: nobody ended its connection.
    window->PumpFor(200);
    EXPECT_EQ(RequestWindowClose("Stubborn").result, CloseRequestResult::Unavailable);
}

TEST_F(CloseAppTest, TitleListsAreCutAtQuotesAndAListWithoutQuotesIsRefused)
{
    EXPECT_EQ(SplitTitleList("  \" First one \"  \"\" \"  \" \"Second\"tail"),
              (std::vector<wxString>{"First one", "Second", "tail"}));
    RunJob(NJobTypeCloseApp, {"Unquoted"});
    const std::vector<RecordedMessage> shown = messages.All();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text, "CloseAppJob::Execute() app title list format error");
    EXPECT_EQ(shown[0].caption, "Message");
}

}  // namespace

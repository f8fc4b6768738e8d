// Close App against real windows. CTest runs these tests twice: through
// openbox (EWMH), and with no window manager at all (WM_DELETE_WINDOW sent
// by us).

#include "desktop/jobs/close_app_job.h"
#include "desktop/platform/window_closer.h"
#include "x11_test_support.h"

namespace {

class CloseAppTest : public DisplayJobTest {};

TestWindowOptions Titled(const std::string& title)
{
    TestWindowOptions options;
    options.title = title;
    return options;
}

class CloseAppBothWays : public CloseAppTest {
protected:
    void Ready(TestWindow& window)
    {
        if (wm) {
            ASSERT_TRUE(window.WaitUntilManaged());
        }
    }

    const bool wm = WindowManagerRuns();
};

TEST_F(CloseAppBothWays, AsksTheWindowWithTheExactTitleAndLeavesTheOthers)
{
    TestWindow target(Titled("Cadrelle target"));
    TestWindow longer(Titled("Cadrelle target 2"));
    TestWindow other(Titled("cadrelle TARGET"));
    Ready(target);
    Ready(longer);
    Ready(other);

    const CloseRequestOutcome outcome = RequestWindowClose("Cadrelle target");
    EXPECT_EQ(outcome.result, CloseRequestResult::Sent);
    EXPECT_TRUE(outcome.detail.Contains(wm ? "_NET_CLOSE_WINDOW" : "WM_DELETE_WINDOW")) << outcome.detail;

    EXPECT_TRUE(target.PumpUntil([&] { return target.deleteRequests == 1; }));
    longer.PumpFor(200);
    other.PumpFor(50);
    EXPECT_EQ(longer.deleteRequests, 0);
    EXPECT_EQ(other.deleteRequests, 0);
    EXPECT_EQ(RequestWindowClose("Cadrelle").result, CloseRequestResult::NotFound);
}

TEST_F(CloseAppBothWays, FirstTitleMissingGivesOneBoxAndTheSecondWindowIsStillAsked)
{
    TestWindow second(Titled("Second \xc3\xa9t\xc3\xa9 window"));  // "été": the title is matched as UTF-8
    Ready(second);

    RunJob(NJobTypeCloseApp, {wxString::FromUTF8("\"No such window\"  \"Second \xc3\xa9t\xc3\xa9 window\"")});

    EXPECT_TRUE(second.PumpUntil([&] { return second.deleteRequests == 1; }));
    const std::vector<RecordedMessage> shown = messages.All();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text, "Window title:\nNo such window\nnot exist.");
    EXPECT_EQ(shown[0].caption, "Message");
    EXPECT_TRUE(log.Has(wxString::FromUTF8("[JID_7] Asked \"Second \xc3\xa9t\xc3\xa9 window\" to close")));
}

TEST_F(CloseAppBothWays, OnlyTheFirstOfTwoSameTitledWindowsIsAsked)
{
    TestWindow first(Titled("Twin"));
    Ready(first);
    TestWindow second(Titled("Twin"));
    Ready(second);

    RunJob(NJobTypeCloseApp, {"\"Twin\""});

    first.PumpFor(300);
    second.PumpFor(100);
    EXPECT_EQ(first.deleteRequests, 1);
    EXPECT_EQ(second.deleteRequests, 0);
    EXPECT_TRUE(messages.All().empty());
}

TEST_F(CloseAppBothWays, WindowsKnownOnlyByTheirOldStyleNameAreFound)
{
    TestWindowOptions options = Titled("Plain name");
    options.netWmName = false;
    TestWindow window(options);
    Ready(window);

    RunJob(NJobTypeCloseApp, {"\"Plain name\""});
    EXPECT_TRUE(window.PumpUntil([&] { return window.deleteRequests == 1; }));
}

TEST_F(CloseAppBothWays, AWindowThatCannotBeAskedIsReportedNotKilled)
{
    TestWindowOptions options = Titled("Stubborn");
    options.acceptsDeleteWindow = false;
    TestWindow window(options);
    Ready(window);

    RunJob(NJobTypeCloseApp, {"\"Stubborn\""});

    const std::vector<std::string> boxes = Boxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_NE(boxes[0].find("Could not ask \"Stubborn\" to close"), std::string::npos) << boxes[0];
    // Still there and still answering: nobody ended its connection.
    window.PumpFor(200);
    EXPECT_EQ(window.deleteRequests, 0);
    EXPECT_EQ(RequestWindowClose("Stubborn").result, CloseRequestResult::Unavailable);
}

TEST_F(CloseAppTest, ATitleListWithoutQuotesIsRefusedAndNothingIsAsked)
{
    TestWindow window(Titled("Unquoted"));
    RunJob(NJobTypeCloseApp, {"Unquoted"});
    window.PumpFor(200);
    EXPECT_EQ(window.deleteRequests, 0);
    const std::vector<RecordedMessage> shown = messages.All();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text, "CloseAppJob::Execute() app title list format error");
    EXPECT_EQ(shown[0].caption, "Message");
}

TEST_F(CloseAppTest, TitlesAreCutAtQuotesTrimmedAndEmptyOnesDropped)
{
    const std::vector<wxString> titles = SplitTitleList("  \" First one \"  \"\" \"  \" \"Second\"tail");
    ASSERT_EQ(titles.size(), 3u);
    EXPECT_EQ(titles[0], "First one");
    EXPECT_EQ(titles[1], "Second");
    EXPECT_EQ(titles[2], "tail");
}

}  // namespace

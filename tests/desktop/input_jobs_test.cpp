// Send Key, Key Typing and Mouse Click: XTest events into real windows of a
// private Xvfb, read back as the windows received them.

#include <X11/keysym.h>

#include "desktop/jobs/input_jobs.h"
#include "desktop/jobs/key_names.h"
#include "x11_test_support.h"

namespace {

class InputJobTest : public DisplayJobTest {
protected:
    // A window at (100, 50), 300 x 200, with no window manager: it stays
    // where it is put.
    static TestWindowOptions Target()
    {
        TestWindowOptions options;
        options.title = "Input target";
        options.x = 100;
        options.y = 50;
        options.width = 300;
        options.height = 200;
        return options;
    }
};

std::u32string TypedText(const std::vector<KeyRecord>& keys)
{
    std::u32string text;
    for (const KeyRecord& key : keys) {
        if (!key.press)
            continue;
        if (key.keysym == XK_Return)
            text += U'\n';
        else if (char32_t c = CodePointOfKeysym(key.keysym))
            text += c;
    }
    return text;
}

TEST_F(InputJobTest, SendKeyPressesInOrderAndReleasesInReverse)
{
    TestWindow window(Target());
    ASSERT_TRUE(window.IsOpen());
    window.TakeFocus();

    RunJob(NJobTypeSendKey, {"CTRL", "shift", " ESCAPE "});

    ASSERT_TRUE(window.PumpUntil([&] { return window.keys.size() >= 6; }));
    ASSERT_EQ(window.keys.size(), 6u);
    const std::vector<std::pair<bool, unsigned long>> expected = {
        {true, XK_Control_L}, {true, XK_Shift_L},  {true, XK_Escape},
        {false, XK_Escape},   {false, XK_Shift_L}, {false, XK_Control_L},
    };
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(window.keys[i].press, expected[i].first);
        EXPECT_EQ(window.keys[i].keysym, expected[i].second);
    }
    EXPECT_TRUE(Boxes().empty());
    EXPECT_TRUE(log.Has("[JID_7] Sent CTRL + shift + ESCAPE"));
}

TEST_F(InputJobTest, SendKeySkipsEmptyKeysAndRefusesUnknownNamesBeforePressingAnything)
{
    TestWindow window(Target());
    ASSERT_TRUE(window.IsOpen());
    window.TakeFocus();

    RunJob(NJobTypeSendKey, {"", "RETURN/ENTER", ""});
    ASSERT_TRUE(window.PumpUntil([&] { return window.keys.size() >= 2; }));
    EXPECT_EQ(window.keys[0].keysym, static_cast<unsigned long>(XK_Return));
    EXPECT_TRUE(window.keys[0].press);
    EXPECT_FALSE(window.keys[1].press);

    window.keys.clear();
    RunJob(NJobTypeSendKey, {"CTRL", "CTRLL", "A"});
    RunJob(NJobTypeSendKey, {});
    window.PumpFor(200);
    EXPECT_TRUE(window.keys.empty());
    const std::vector<std::string> boxes = Boxes();
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_NE(boxes[0].find("\"CTRLL\" is not a key name"), std::string::npos) << boxes[0];
    EXPECT_NE(boxes[1].find("no key is set"), std::string::npos) << boxes[1];
}

TEST_F(InputJobTest, EveryNamedKeyThatXvfbHasReachesTheWindow)
{
    TestWindow window(Target());
    ASSERT_TRUE(window.IsOpen());
    window.TakeFocus();
    // One key at a time through the job; each must arrive as itself.
    // Names are read without regard to case or blanks around them.
    const std::pair<const char*, unsigned long> keys[] = {
        {"BACK", XK_BackSpace}, {"TAB", XK_Tab},     {"DELETE", XK_Delete}, {"HOME", XK_Home},
        {"PAGEUP", XK_Prior},   {"PAGEDOWN", XK_Next}, {"LEFT", XK_Left},   {"F5", XK_F5},
        {"Q", XK_q},            {"7", XK_7},         {"SPACE", XK_space},   {"PRINT", XK_Print},
        {"ENTER", XK_Return},   {" esc ", XK_Escape}, {"a", XK_a},          {"F12", XK_F12},
    };
    for (const auto& [name, sym] : keys) {
        SCOPED_TRACE(name);
        window.keys.clear();
        RunJob(NJobTypeSendKey, {name});
        ASSERT_TRUE(window.PumpUntil([&] { return window.keys.size() >= 2; }));
        EXPECT_EQ(window.keys[0].keysym, sym);
    }
    EXPECT_TRUE(Boxes().empty());
    for (const char* unknown : {"", "F13", "CTRL+A", "RETURN/", "AA", "10"})
        EXPECT_FALSE(KeyFromName(unknown).has_value()) << unknown;
}

TEST_F(InputJobTest, KeyTypingClicksEachPointAndTypesItsText)
{
    TestWindow left([] {
        TestWindowOptions o = Target();
        o.width = 140;
        return o;
    }());
    TestWindow right([] {
        TestWindowOptions o = Target();
        o.x = 260;
        o.width = 140;
        return o;
    }());
    // "€" is on no key of a US map: it is typed through a lent key.
    const wxString first = wxString::FromUTF8("Hello, World! ~ 1+1=2 \xc3\xa9\xc3\xbc \xe2\x82\xac");
    // The points at 50 % scale: (160, 100) and (330, 120) on screen.
    RunJobWhilePumping(NJobTypeKeyTyping, {"320,200", first, "660,240", "x\ny", "50"}, {&left, &right});

    ASSERT_TRUE(left.PumpUntil([&] { return left.buttons.size() == 1 && TypedText(left.keys).size() >= 20; }));
    ASSERT_TRUE(right.PumpUntil([&] { return right.buttons.size() == 1 && TypedText(right.keys).size() >= 3; }));
    EXPECT_EQ(TypedText(left.keys), U"Hello, World! ~ 1+1=2 \u00e9\u00fc \u20ac");
    EXPECT_EQ(TypedText(right.keys), U"x\ny");
    EXPECT_EQ(left.buttons[0].button, 1u);
    EXPECT_EQ(left.buttons[0].x, 60);
    EXPECT_EQ(left.buttons[0].y, 50);
    EXPECT_EQ(right.buttons[0].x, 70);
    EXPECT_EQ(right.buttons[0].y, 70);
    EXPECT_TRUE(Boxes().empty());
    // The lent key is empty again afterwards.
    EXPECT_FALSE(KeyboardHasKeysym(0x10020ac));
}

TEST_F(InputJobTest, KeyTypingRefusesABadPointAndDoesNothing)
{
    TestWindow window(Target());
    RunJob(NJobTypeKeyTyping, {"150,100", "abc", "200;200", "def", "100"});
    RunJob(NJobTypeKeyTyping, {"150,100", "abc", "", "", "0"});
    window.PumpFor(300);
    EXPECT_TRUE(window.keys.empty());
    EXPECT_TRUE(window.buttons.empty());
    const std::vector<std::string> boxes = Boxes();
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_NE(boxes[0].find("the point of set 2, \"200;200\""), std::string::npos) << boxes[0];
    EXPECT_NE(boxes[1].find("the scale \"0\""), std::string::npos) << boxes[1];
}

TEST_F(InputJobTest, MouseClickClicksEveryScaledPointWithTheChosenButton)
{
    TestWindow window(Target());
    // 200 %: (110, 60) and (250, 200) on screen.
    RunJob(NJobTypeMouseClick, {"55,30; 125 , 100", "0", "Click", "Left Button", "200"});
    ASSERT_TRUE(window.PumpUntil([&] { return window.buttons.size() >= 2; }));
    ASSERT_EQ(window.buttons.size(), 2u);
    EXPECT_EQ(window.buttons[0].button, 1u);
    EXPECT_EQ(window.buttons[0].x, 10);
    EXPECT_EQ(window.buttons[0].y, 10);
    EXPECT_EQ(window.buttons[1].x, 150);
    EXPECT_EQ(window.buttons[1].y, 150);

    // A double click with the right button, stored by position: two presses.
    window.buttons.clear();
    RunJob(NJobTypeMouseClick, {"120,70", "0", "1", "1", ""});
    ASSERT_TRUE(window.PumpUntil([&] { return window.buttons.size() >= 2; }));
    window.PumpFor(100);
    ASSERT_EQ(window.buttons.size(), 2u);
    EXPECT_EQ(window.buttons[0].button, 3u);
    EXPECT_EQ(window.buttons[1].button, 3u);
    EXPECT_EQ(window.buttons[1].x, 20);
    EXPECT_LT(window.buttons[1].time - window.buttons[0].time, 400u);  // inside any double-click time
    EXPECT_TRUE(Boxes().empty());
}

TEST_F(InputJobTest, MouseClickWaitsTheIntervalBetweenPoints)
{
    TestWindow window(Target());
    RunJob(NJobTypeMouseClick, {"110,60 120,60 130,60", "250", "Click", "Left Button", "100"});
    ASSERT_TRUE(window.PumpUntil([&] { return window.buttons.size() >= 3; }));
    // Server time stamps: at least the interval lies between two points.
    EXPECT_GE(window.buttons[1].time - window.buttons[0].time, 245u);
    EXPECT_GE(window.buttons[2].time - window.buttons[1].time, 245u);
}

TEST_F(InputJobTest, PointListsAcceptSemicolonsAndBlanksAndRejectTheRest)
{
    struct Case {
        const char* text;
        std::vector<ScreenPoint> points;
    };
    const Case good[] = {
        {"100,100;200,200", {{100, 100}, {200, 200}}},
        {"100,100 200,200", {{100, 100}, {200, 200}}},
        {" 1 , 2 ;; 3,4\t5 ,6 ;", {{1, 2}, {3, 4}, {5, 6}}},
        {"", {}},
    };
    for (const Case& c : good) {
        SCOPED_TRACE(c.text);
        std::vector<ScreenPoint> points;
        wxString bad;
        ASSERT_TRUE(ParsePointList(c.text, points, bad)) << bad;
        EXPECT_EQ(points, c.points);
    }
    const std::pair<const char*, const char*> rejected[] = {
        {"100", "100"}, {"1,2;a,b", "a,b"}, {"1,2,3", ",3"}, {"1,-2", "1,-2"}, {"1;2", "1"},
    };
    for (const auto& [text, piece] : rejected) {
        SCOPED_TRACE(text);
        std::vector<ScreenPoint> points;
        wxString bad;
        EXPECT_FALSE(ParsePointList(text, points, bad));
        EXPECT_EQ(bad, piece);
    }
    EXPECT_EQ(ScalePoint({101, 99}, 150), (ScreenPoint{151, 148}));
    EXPECT_FALSE(ParseClickKind("Triple Click").has_value());
    EXPECT_FALSE(ParseMouseButton("2").has_value());
}

TEST_F(InputJobTest, MouseClickRefusesBadParametersWithAMessage)
{
    TestWindow window(Target());
    const std::vector<ParamList> bad = {
        {"", "100", "Click", "Left Button", "100"},
        {"110,60", "soon", "Click", "Left Button", "100"},
        {"110,60", "100", "Triple", "Left Button", "100"},
        {"110,60", "100", "Click", "Middle Button", "100"},
        {"110,60", "100", "Click", "Left Button", "-1"},
    };
    for (const ParamList& params : bad)
        RunJob(NJobTypeMouseClick, params);
    window.PumpFor(300);
    EXPECT_TRUE(window.buttons.empty());
    EXPECT_EQ(Boxes().size(), bad.size());
}

}  // namespace

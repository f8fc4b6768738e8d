// Send Key, Key Typing and Mouse Click: XTest events into real windows on
// the launcher's Xvfb, read back as the windows received them.

#include <X11/keysym.h>

#include <atomic>
#include <thread>

#include "desktop/jobs/input_jobs.h"
#include "desktop/jobs/key_names.h"
#include "x11_test_support.h"

namespace {

// At (100, 50), 300 x 200; with no window manager it stays where it is put.
const TestWindowOptions kTarget{"Input target", 100, 50, 300, 200};

std::u32string TypedText(const std::vector<KeyRecord>& keys)
{
    std::u32string text;
    for (const KeyRecord& key : keys) {
        if (key.press && key.keysym == XK_Return)
            text += U'\n';
        else if (char32_t c = key.press ? CodePointOfKeysym(key.keysym) : 0)
            text += c;
    }
    return text;
}

TEST_F(DisplayJobTest, SendKeyPressesInOrderReleasesInReverseAndKnowsEveryNamedKey)
{
    TestWindow window(kTarget);
    window.TakeFocus();
    // Names without regard to case or blanks around them; empty ones skipped.
    const std::pair<ParamList, std::vector<unsigned long>> rows[] = {
        {{"CTRL", "shift", " ESCAPE "}, {XK_Control_L, XK_Shift_L, XK_Escape}},
        {{"", "RETURN/ENTER", ""}, {XK_Return}}, {{"BACK"}, {XK_BackSpace}}, {{"TAB"}, {XK_Tab}},
        {{"PAGEUP"}, {XK_Prior}}, {{"F12"}, {XK_F12}}, {{"Q"}, {XK_q}}, {{"7"}, {XK_7}}, {{"SPACE"}, {XK_space}},
    };
    for (const auto& [names, presses] : rows) {
        SCOPED_TRACE(names[names.size() > 1 ? 1 : 0].utf8_string());
        std::vector<std::pair<bool, unsigned long>> expected, received;
        for (unsigned long sym : presses)
            expected.emplace_back(true, sym);
        for (auto sym = presses.rbegin(); sym != presses.rend(); ++sym)
            expected.emplace_back(false, *sym);
        window.keys.clear();
        RunJob(NJobTypeSendKey, names);
        ASSERT_TRUE(window.PumpUntil([&] { return window.keys.size() >= expected.size(); }));
        for (const KeyRecord& key : window.keys)
            received.emplace_back(key.press, key.keysym);
        EXPECT_EQ(received, expected);
    }
    EXPECT_TRUE(log.Has("[JID_7] Sent CTRL + shift + ESCAPE"));
    EXPECT_TRUE(messages.Boxes().empty());
    for (const char* unknown : {"", "F13", "CTRL+A", "RETURN/", "AA", "10"})
        EXPECT_FALSE(KeyFromName(unknown).has_value()) << unknown;
}

TEST_F(DisplayJobTest, KeyTypingClicksEachPointAndTypesItsText)
{
    TestWindow left(TestWindowOptions{"Left", 100, 50, 140, 200});
    TestWindow right(TestWindowOptions{"Right", 260, 50, 140, 200});
    // "€" is on no key of a US map: it is typed through a lent key, which
    // the windows only read right while they handle events.
    const wxString first = wxString::FromUTF8("Hello, World! ~ 1+1=2 \xc3\xa9\xc3\xbc \xe2\x82\xac");
    std::atomic<bool> done{false};
    std::thread worker([&] {
        // The points at 50 %: (160, 100) and (330, 120) on screen.
        RunJob(NJobTypeKeyTyping, {"320,200", first, "660,240", "x\ny", "50"});
        done = true;
    });
    while (!done) {
        left.PumpFor(5);
        right.PumpFor(5);
    }
    worker.join();
    ASSERT_TRUE(left.PumpUntil([&] { return left.buttons.size() == 1 && TypedText(left.keys).size() >= 20; }));
    ASSERT_TRUE(right.PumpUntil([&] { return right.buttons.size() == 1 && TypedText(right.keys).size() >= 3; }));
    EXPECT_EQ(TypedText(left.keys), U"Hello, World! ~ 1+1=2 \u00e9\u00fc \u20ac");
    EXPECT_EQ(TypedText(right.keys), U"x\ny");
    EXPECT_EQ(std::make_tuple(left.buttons[0].button, left.buttons[0].x, left.buttons[0].y), std::make_tuple(1u, 60, 50));
    EXPECT_EQ(std::make_pair(right.buttons[0].x, right.buttons[0].y), std::make_pair(70, 70));
    EXPECT_TRUE(messages.Boxes().empty());
    EXPECT_FALSE(KeyboardHasKeysym(0x10020ac));  // the lent key is empty again
}

TEST_F(DisplayJobTest, MouseClickClicksEveryScaledPointWithTheChosenButtonAndInterval)
{
    TestWindow window(kTarget);
    // 200 %: (110, 60) and (250, 200) on screen, 250 ms apart.
    RunJob(NJobTypeMouseClick, {"55,30; 125 , 100", "250", "Click", "Left Button", "200"});
    ASSERT_TRUE(window.PumpUntil([&] { return window.buttons.size() >= 2; }));
    const std::vector<ButtonRecord> b = window.buttons;
    EXPECT_EQ(std::vector<int>({int(b[0].button), b[0].x, b[0].y, int(b[1].button), b[1].x, b[1].y}),
              std::vector<int>({1, 10, 10, 1, 150, 150}));
    EXPECT_GE(b[1].time - b[0].time, 245u);  // server time stamps

    EXPECT_TRUE(messages.Boxes().empty());
}

TEST_F(DisplayJobTest, BadParametersAreRefusedWithAMessageBeforeAnyInput)
{
    TestWindow window(kTarget);
    window.TakeFocus();
    const std::tuple<std::uint32_t, ParamList, const char*> bad[] = {
        {NJobTypeSendKey, {"CTRL", "CTRLL", "A"}, "\"CTRLL\" is not a key name"},
        {NJobTypeSendKey, {}, "no key is set"},
        {NJobTypeKeyTyping, {"150,100", "abc", "200;200", "def", "100"}, "the point of set 2, \"200;200\""},
        {NJobTypeKeyTyping, {"150,100", "abc", "", "", "0"}, "the scale \"0\""},
        {NJobTypeMouseClick, {"", "100", "Click", "Left Button", "100"}, ""},
        {NJobTypeMouseClick, {"110,60", "100", "Triple", "Left Button", "100"}, ""},
        {NJobTypeMouseClick, {"110,60", "100", "Click", "Left Button", "-1"}, ""},
    };
    for (const auto& [kind, params, says] : bad) {
        SCOPED_TRACE(says);
        RunJob(kind, params);
        const std::vector<std::string> boxes = messages.Boxes();
        ASSERT_FALSE(boxes.empty());
        EXPECT_NE(boxes.back().find(says), std::string::npos) << boxes.back();
    }
    window.PumpFor(300);
    EXPECT_TRUE(window.keys.empty());
    EXPECT_TRUE(window.buttons.empty());
    EXPECT_EQ(messages.Boxes().size(), std::size(bad));
}

TEST(PointList, SemicolonsAndBlanksSeparateAndAnythingElseIsNamed)
{
    const std::tuple<const char*, std::vector<ScreenPoint>, const char*> rows[] = {
        {"100,100;200,200", {{100, 100}, {200, 200}}, ""}, {"100,100 200,200", {{100, 100}, {200, 200}}, ""},
        {" 1 , 2 ;; 3,4\t5 ,6 ;", {{1, 2}, {3, 4}, {5, 6}}, ""}, {"", {}, ""},
        {"100", {}, "100"}, {"1,2;a,b", {}, "a,b"}, {"1,2,3", {}, ",3"}, {"1,-2", {}, "1,-2"}, {"1;2", {}, "1"},
    };
    for (const auto& [text, expected, badPiece] : rows) {
        std::vector<ScreenPoint> points;
        wxString bad;
        EXPECT_EQ(ParsePointList(text, points, bad), !*badPiece) << text;
        EXPECT_EQ(bad, badPiece) << text;
        EXPECT_TRUE(*badPiece || points == expected) << text;
    }
    EXPECT_EQ(ScalePoint({101, 99}, 150), (ScreenPoint{151, 148}));
    EXPECT_FALSE(ParseClickKind("Triple Click").has_value());
    EXPECT_FALSE(ParseMouseButton("2").has_value());
}

}  // namespace

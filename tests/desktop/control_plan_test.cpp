// The command-line control's requests, answers and status text; the hot keys from the preferences.

#include <ctime>
#include <tuple>

#include <X11/keysym.h>
#include <gtest/gtest.h>

#include "desktop/control/control_protocol.h"
#include "desktop/hotkey_plan.h"

using Kind = ControlRequest::Kind;

TEST(ControlProtocol, RequestLines)
{
    struct Row {
        const char* line;
        bool valid;
        ControlRequest request;
    } rows[] = {
        {"status\n", true, {Kind::Status}}, {"pause\n", true, {Kind::Pause}}, {"resume\n", true, {Kind::Resume}},
        {"show\n", true, {Kind::Show}}, {"silent on\n", true, {Kind::Silent, true}},
        {"silent off\n", true, {Kind::Silent, false}}, {"run 7\n", true, {Kind::Run, false, 7}},
        {"run 2147483647\n", true, {Kind::Run, false, 2147483647}}, {"run 2147483648\n", false, {}},
        {"run +3\n", false, {}}, {"run 3x\n", false, {}}, {"silent maybe\n", false, {}}, {"STATUS\n", false, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.line);
        const auto parsed = ParseRequest(row.line);
        ASSERT_EQ(parsed.has_value(), row.valid);
        if (row.valid) {
            EXPECT_EQ(*parsed, row.request);
            EXPECT_EQ(FormatRequest(*parsed), row.line);
        }
    }
}

TEST(ControlProtocol, AnswersAndStatusLines)
{
    const ControlAnswer answer{2, "state: paused\njobs: 3\n", "No job with JID 9.\n"};
    const auto back = ParseAnswer(FormatAnswer(answer));
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(std::tie(back->exitCode, back->out, back->err), std::tie(answer.exitCode, answer.out, answer.err));
    for (const char* bad : {"", "exit\n", "exit x\n", "exit 300\n", "exit 0\nhello\n", "out a\n"})
        EXPECT_FALSE(ParseAnswer(bad).has_value()) << bad;

    std::tm local{};  // 2026-01-15 08:05:09 local time
    local.tm_year = 126, local.tm_mday = 15, local.tm_hour = 8, local.tm_min = 5, local.tm_sec = 9, local.tm_isdst = -1;
    InstanceStatus status{true, false, 3, 5, true, static_cast<std::int64_t>(std::mktime(&local)), 12};
    EXPECT_EQ(FormatStatus(status),
              "state: paused\nsilent: off\njobs: 3\ntriggers: 5\nnext: 2026-01-15 08:05:09 JID 12\n"
              "last failure: none\n");
    status = InstanceStatus{false, true, 0, 0, false, 0, 0, "2026-01-15 08:00:00 JID 4 Backup: disk full"};
    EXPECT_EQ(FormatStatus(status), "state: running\nsilent: on\njobs: 0\ntriggers: 0\nnext: none\n"
                                    "last failure: 2026-01-15 08:00:00 JID 4 Backup: disk full\n");
}

TEST(HotKeyPlan, PreferenceValuesBecomeGrabs)
{
    struct Row {
        const char* modifier;
        const char* key;
        bool valid;
        int modifiers;
        unsigned long keysym;
        const char* trigger;  // at the desktop portal
    } rows[] = {
        {"4", "57", true, kModControl | kModShift, XK_9, "CTRL+SHIFT+9"}, {"1", "48", true, kModControl | kModAlt, XK_0, "CTRL+ALT+0"},
        {"0", "65", true, kModControl, XK_a, "CTRL+a"}, {"12", "112", true, kModControl | kModShift | kModWin, XK_F1, "CTRL+SHIFT+LOGO+F1"},
        {"4", "96", true, kModControl | kModShift, XK_KP_0, "CTRL+SHIFT+KP_0"}, {"4", "300", false, 0, 0, ""}, {"16", "57", false, 0, 0, ""},
        {"x", "57", false, 0, 0, ""}, {"4", "", false, 0, 0, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.modifier) + "/" + row.key);
        const HotKeyBinding binding = BindingFromValues(row.modifier, row.key);
        ASSERT_EQ(binding.valid, row.valid);
        EXPECT_EQ(PortalTrigger(binding), row.trigger);
        if (row.valid) {
            EXPECT_EQ(binding.modifiers, row.modifiers);
            EXPECT_EQ(binding.keysym, row.keysym);
        }
    }
}

TEST(HotKeyPlan, FailureTextsAndCustomKeys)
{
    EXPECT_EQ(HotKeyFailureText(HotKeyId::PauseMode, "4"),
              "Register Open/Close pause mode HOTKEY failed.\nHOTKEY restore default setting: Ctrl + Shift + 9\n"
              "You can reset HOTKEY setting in Setting dialog.");
    const std::array<wxString, 3> stored = {"56", "55", "56"};
    EXPECT_EQ(CustomKeyIndex(56, stored), 0);  // the first match wins
    EXPECT_EQ(CustomKeyIndex(55, stored), 1);
    EXPECT_EQ(CustomKeyIndex(54, stored), -1);
    EXPECT_EQ(PortalRequestPath(":1.42", "cadrelle7"), "/org/freedesktop/portal/desktop/request/1_42/cadrelle7");
}

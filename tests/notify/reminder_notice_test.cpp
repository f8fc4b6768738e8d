// Reminders and desktop notifications against python3-dbusmock's
// notification daemon on the launcher's session bus: what reaches the bus,
// and where a reminder goes when the desktop cannot show a notification.

#include <gtest/gtest.h>

#include "core/jobs/job_kinds.h"
#include "dbus_mock.h"
#include "desktop/jobs/reminder_job.h"
#include "desktop/platform/desktop_notifier.h"

namespace {

const char* const kObject = "/org/freedesktop/Notifications";

struct NotificationDaemon : DbusMock {
    NotificationDaemon() : DbusMock("org.freedesktop.Notifications", {"--template", "notification_daemon"}) {}
};

class ReminderTest : public ::testing::Test {
protected:
    void SetUp() override { RegisterReminderJobAction(); }
    RecordedMessages messages;
};

}  // namespace

TEST_F(ReminderTest, NotificationReachesTheServiceWithItsTextShownAsWritten)
{
    NotificationDaemon daemon;
    ASSERT_TRUE(daemon.IsRunning());
    const NotifyOutcome outcome = SendDesktopNotification("Cadrelle", "Backup <done> & saved");
    ASSERT_TRUE(outcome.ok) << outcome.reason;
    // Markup escaped, so that it displays as written; normal urgency; the
    // server's own display time (-1): it goes away by itself.
    EXPECT_EQ(daemon.Calls(kObject),
              std::vector<std::string>{"Notify('Cadrelle', uint32 0, '', 'Cadrelle', "
                                       "'Backup &lt;done&gt; &amp; saved', @as [], {'urgency': byte 0x01}, -1)"});
}

TEST_F(ReminderTest, ImportantStaysInAWindowOtherwiseANotificationAndWithoutServiceTheWindow)
{
    {
        NotificationDaemon daemon;
        ASSERT_TRUE(daemon.IsRunning());
        RunJob(NJobTypeReminder, {"Stretch your legs", "0"}, 4);
        RunJob(NJobTypeReminder, {"Call the dentist", "1"}, 4);
        const std::vector<std::string> calls = daemon.Calls(kObject);
        ASSERT_EQ(calls.size(), 1u) << "an important reminder is not a passing notification";
        EXPECT_NE(calls[0].find("'Reminder', 'Stretch your legs'"), std::string::npos) << calls[0];
    }
    // The bus is there, but nobody serves notifications on it.
    RunJob(NJobTypeReminder, {"Water the plants", ""}, 5);
    const std::vector<RecordedMessage> shown = messages.All();
    ASSERT_EQ(shown.size(), 2u);
    for (const RecordedMessage& message : shown)
        EXPECT_EQ(message.kind, RecordedMessage::Kind::Reminder);
    EXPECT_EQ(shown[0].text, "Call the dentist");
    EXPECT_EQ(shown[0].jobId, 4u);
    EXPECT_TRUE(shown[0].important);
    EXPECT_EQ(shown[1].text, "Water the plants");

    const NotifyOutcome outcome = SendDesktopNotification("Cadrelle", "x");
    EXPECT_FALSE(outcome.ok);
    EXPECT_TRUE(outcome.reason.Contains("no desktop notification service")) << outcome.reason;
}

TEST_F(ReminderTest, WithoutASessionBusTheReasonSaysSo)
{
    TempDir runtime;
    const ScopedEnv bus("DBUS_SESSION_BUS_ADDRESS", nullptr);
    const ScopedEnv folder("XDG_RUNTIME_DIR", runtime.Path().utf8_str());
    const NotifyOutcome outcome = SendDesktopNotification("Cadrelle", "x");
    EXPECT_FALSE(outcome.ok);
    EXPECT_TRUE(outcome.reason.Contains("DBUS_SESSION_BUS_ADDRESS is not set")) << outcome.reason;
}

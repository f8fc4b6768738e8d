// Reminders against python3-dbusmock's notification daemon on the launcher's
// session bus: what reaches the bus, and where a reminder goes when the
// desktop cannot show a notification.

#include <gtest/gtest.h>

#include "core/jobs/job_kinds.h"
#include "dbus_mock.h"
#include "desktop/jobs/reminder_job.h"
#include "desktop/platform/desktop_notifier.h"

TEST(Reminder, ImportantStaysInAWindowOtherwiseANotificationAndWithoutServiceTheWindow)
{
    RegisterReminderJobAction(HarnessContext().Actions());
    RecordedMessages messages;
    {
        DbusMock daemon("org.freedesktop.Notifications", {"--template", "notification_daemon"});
        ASSERT_TRUE(daemon.IsRunning());
        RunJob(NJobTypeReminder, {"Stretch <your> legs & rest", "0"}, 4);
        RunJob(NJobTypeReminder, {"Call the dentist", "1"}, 4);
        // Markup escaped, so that it displays as written; normal urgency; the
        // server's own display time (-1): it goes away by itself.
        EXPECT_EQ(daemon.Calls("/org/freedesktop/Notifications"),
                  std::vector<std::string>{"Notify('Cadrelle', uint32 0, '', 'Reminder', "
                                           "'Stretch &lt;your&gt; legs &amp; rest', @as [], {'urgency': byte 0x01}, -1)"})
            << "an important reminder is not a passing notification";
    }
    // The bus is there, but nobody serves notifications on it.
    RunJob(NJobTypeReminder, {"Water the plants", ""}, 5);
    const std::vector<RecordedMessage> shown = messages.All();
    ASSERT_EQ(shown.size(), 2u);
    for (const RecordedMessage& message : shown)
        EXPECT_EQ(message.kind, RecordedMessage::Kind::Reminder);
    EXPECT_EQ(std::make_tuple(shown[0].text, shown[0].jobId, shown[0].important),
              std::make_tuple(std::string("Call the dentist"), 4u, true));
    EXPECT_EQ(std::make_tuple(shown[1].text, shown[1].important), std::make_tuple(std::string("Water the plants"), false));

    const NotifyOutcome outcome = SendDesktopNotification("Cadrelle", "x");
    EXPECT_FALSE(outcome.ok);
    EXPECT_TRUE(outcome.reason.Contains("no desktop notification service")) << outcome.reason;
}

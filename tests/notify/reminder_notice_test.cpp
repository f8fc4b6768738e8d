// Reminders and desktop notifications against python3-dbusmock's
// notification daemon on a private bus: what reaches the bus, and where a
// reminder goes when the desktop cannot show a notification.

#include <cstdlib>
#include <memory>

#include <gio/gio.h>
#include <gtest/gtest.h>

#include "core/jobs/job.h"
#include "core/jobs/job_actions.h"
#include "core/jobs/job_kinds.h"
#include "desktop/jobs/reminder_job.h"
#include "desktop/platform/desktop_notifier.h"
#include "private_bus.h"
#include "recorded_messages.h"
#include "../core/test_support.h"

namespace {

const char* const kService = "org.freedesktop.Notifications";
const char* const kObject = "/org/freedesktop/Notifications";

// One bus for the whole program: GLib keeps its session-bus connection for
// the life of the process, so the address must not change under it.
PrivateBus* g_bus = nullptr;

class BusEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        g_bus = new PrivateBus;
        ASSERT_TRUE(g_bus->IsRunning());
        ::setenv("DBUS_SESSION_BUS_ADDRESS", g_bus->Address().c_str(), 1);
    }
    void TearDown() override { delete g_bus; }
};

[[maybe_unused]] ::testing::Environment* const g_env = ::testing::AddGlobalTestEnvironment(new BusEnvironment);

std::string StringArg(const MockCall& call, gsize index)
{
    GVariant* boxed = g_variant_get_child_value(call.args, index);
    GVariant* value = g_variant_get_variant(boxed);
    std::string text = g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) ? g_variant_get_string(value, nullptr) : "";
    g_variant_unref(value);
    g_variant_unref(boxed);
    return text;
}

gint32 IntArg(const MockCall& call, gsize index)
{
    GVariant* boxed = g_variant_get_child_value(call.args, index);
    GVariant* value = g_variant_get_variant(boxed);
    const gint32 number = g_variant_get_int32(value);
    g_variant_unref(value);
    g_variant_unref(boxed);
    return number;
}

void RunReminder(const wxString& message, const wxString& important)
{
    std::unique_ptr<Job> job = CreateJob(NJobTypeReminder);
    JobParam param;
    param.id = 4;
    param.type = NJobTypeReminder;
    param.params = {message, important};
    job->SetParam(param);
    RegisterReminderJobAction();
    job->Execute();
}

}  // namespace

TEST(DesktopNotification, ReachesTheServiceWithItsTextShownAsWritten)
{
    DbusMock daemon(*g_bus, "notification_daemon", kService, kObject);
    ASSERT_TRUE(daemon.IsRunning());

    const NotifyOutcome outcome = SendDesktopNotification("Cadrelle", "Backup <done> & saved");
    ASSERT_TRUE(outcome.ok) << outcome.reason;
    const std::vector<MockCall> calls = daemon.Calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].method, "Notify");
    // The service's documented signature.
    EXPECT_EQ(calls[0].signature, "susssasa{sv}i");
    EXPECT_EQ(StringArg(calls[0], 0), "Cadrelle");
    EXPECT_EQ(StringArg(calls[0], 3), "Cadrelle");
    // Servers may read markup; the escaped text displays as it was written.
    EXPECT_EQ(StringArg(calls[0], 4), "Backup &lt;done&gt; &amp; saved");
    // The server's own display time: it goes away by itself.
    EXPECT_EQ(IntArg(calls[0], 7), -1);
}

TEST(ReminderJob, ImportantStaysInAWindowOtherwiseANotification)
{
    DbusMock daemon(*g_bus, "notification_daemon", kService, kObject);
    ASSERT_TRUE(daemon.IsRunning());
    RecordedMessages messages;

    RunReminder("Stretch your legs", "0");
    std::vector<MockCall> calls = daemon.Calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(StringArg(calls[0], 3), "Reminder");
    EXPECT_EQ(StringArg(calls[0], 4), "Stretch your legs");
    EXPECT_TRUE(messages.All().empty());

    RunReminder("Call the dentist", "1");
    EXPECT_EQ(daemon.Calls().size(), 1u) << "an important reminder is not a passing notification";
    const std::vector<RecordedMessage> shown = messages.All();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].kind, RecordedMessage::Kind::Reminder);
    EXPECT_EQ(shown[0].text, "Call the dentist");
    EXPECT_EQ(shown[0].jobId, 4u);
    EXPECT_TRUE(shown[0].important);
}

TEST(ReminderJob, WithoutANotificationServiceItFallsBackToTheWindow)
{
    RecordedMessages messages;
    // The bus is there, but nobody serves notifications on it.
    RunReminder("Water the plants", "");
    ASSERT_EQ(messages.All().size(), 1u);
    EXPECT_EQ(messages.All()[0].kind, RecordedMessage::Kind::Reminder);
    EXPECT_EQ(messages.All()[0].text, "Water the plants");

    const NotifyOutcome outcome = SendDesktopNotification("Cadrelle", "x");
    EXPECT_FALSE(outcome.ok);
    EXPECT_TRUE(outcome.reason.Contains("no desktop notification service")) << outcome.reason;
}

TEST(DesktopNotification, WithoutASessionBusTheReasonSaysSo)
{
    TempDir runtime;
    const std::string address = g_bus->Address();
    ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
    ::setenv("XDG_RUNTIME_DIR", runtime.Path().utf8_str(), 1);
    const NotifyOutcome outcome = SendDesktopNotification("Cadrelle", "x");
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    EXPECT_FALSE(outcome.ok);
    EXPECT_TRUE(outcome.reason.Contains("DBUS_SESSION_BUS_ADDRESS is not set")) << outcome.reason;
}

// systemd user timers as jobs: OnCalendar= forms a Cron trigger says exactly,
// the start delays, and every other setting refused with its line.

#include <gtest/gtest.h>

#include "core/import/systemd_timer_import.h"
#include "harness.h"

TEST(SystemdTimerImport, OnCalendarFormsBecomeConditionsOrReasons)
{
    const struct {
        int line;
        const char* value;
        const char* condition;  // or, when it cannot be said, the reason
    } cases[] = {
        {__LINE__, "daily", "0 0 0 * * *"},
        {__LINE__, "Weekly", "0 0 0 ? * 1"},  // systemd's week starts on Monday
        {__LINE__, "quarterly", "0 0 0 1 1,4,7,10 ?"},
        {__LINE__, "*-*-* 08:30", "00 30 08 * * *"},
        {__LINE__, "Mon..Fri 08:30:15", "15 30 08 * * 1-5"},
        {__LINE__, "Saturday,Sunday *-*-* 10:00", "00 00 10 * * 6,0"},
        {__LINE__, "*-*-01,15 12:00", "00 00 12 01,15 * ?"},
        {__LINE__, "*-01..03-01 00:00", "00 00 00 01 01-03 ?"},
        {__LINE__, "*:0/15", "00 0/15 * * * *"},
        {__LINE__, "Fri *-*-13 00:00", "00 00 00 13 * 5"},  // both must match, as systemd reads it
        {__LINE__, "2027-01-01 00:00", "OnCalendar=2027-01-01 00:00 names a year, which a Cron trigger has no field for"},
        {__LINE__, "*-*~1 00:00", "OnCalendar=*-*~1 00:00: a form a Cron trigger cannot say exactly"},
        {__LINE__, "*-*-* 00:00:00.5", "OnCalendar=*-*-* 00:00:00.5: a form a Cron trigger cannot say exactly"},
        {__LINE__, "daily UTC",
         "\"UTC\" in OnCalendar=daily UTC: a time zone or a form a Cron trigger cannot say"},
        {__LINE__, "*-*-* 25:00", "OnCalendar=*-*-* 25:00 is not valid: Specified range exceeds maximum"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        wxString reason;
        const std::string condition = OnCalendarCondition(c.value, reason);
        EXPECT_EQ(condition.empty() ? reason.utf8_string() : condition, c.condition);
    }
}

TEST(SystemdTimerImport, TimersWithTheirServicesBecomeOneJobEach)
{
    const std::string service = "[Unit]\nDescription=Tidy downloads\n[Service]\nType=oneshot\nExecStart=-tidy --old\n";
    const struct {
        int line;
        const char* timer;
        std::string service;
        bool found;
        const char* fate;  // "job <command> | <conditions or start delay>" or the reason
    } cases[] = {
        {__LINE__, "[Timer]\nOnCalendar=daily\nOnCalendar=Mon 09:00\nPersistent=true\n", service, true,
         "job tidy --old | 0 0 0 * * * | 00 00 09 * * 1"},
        {__LINE__, "[Timer]\nOnCalendar=daily\nOnCalendar=\nOnCalendar=hourly\n", service, true,
         "job tidy --old | 0 0 * * * *"},
        {__LINE__, "[Timer]\nOnBootSec=1h 30min\n", service, true, "job tidy --old | start 0 1 30 0"},
        {__LINE__, "[Timer]\nOnStartupSec=90\n", service, true, "job tidy --old | start 0 0 1 30"},
        {__LINE__, "[Timer]\nOnUnitActiveSec=1h\n", service, true,
         "line 2: OnUnitActiveSec=1h: no Cadrelle trigger does this"},
        {__LINE__, "[Timer]\nOnCalendar=daily\nOnCalendar=2030-01-01\n", service, true,
         "line 3: OnCalendar=2030-01-01 names a year, which a Cron trigger has no field for"},
        {__LINE__, "[Timer]\nOnBootSec=500ms\n", service, true,
         "line 2: OnBootSec=500ms: not a time span in seconds, minutes, hours, days or weeks"},
        {__LINE__, "[Timer]\nOnCalendar=daily\n", "", false, "tidy.service was not found"},
        {__LINE__, "[Timer]\nOnCalendar=daily\n", "[Service]\nExecStart=echo $HOME\n", true,
         "tidy.service, line 2: ExecStart=echo $HOME: a command with \"$\", \"%\" or a prefix that changes how it runs"},
        {__LINE__, "[Timer]\nOnCalendar=daily\n", "[Service]\nExecStart=x\nEnvironment=A=1\n", true,
         "tidy.service, line 3: Environment=A=1: not brought over"},
        {__LINE__, "[Timer]\nOnCalendar=daily\n", "[Service]\nType=oneshot\n", true, "tidy.service has no ExecStart="},
        {__LINE__, "[Timer]\nOnCalendar=daily \\\n", service, true, "line 2: a line continued on the next is not read"},
        {__LINE__, "[Timer]\nbroken\n", service, true, "line 2: not a setting (no \"=\")"},
        {__LINE__, "[Unit]\nDescription=x\n", service, true, "no OnCalendar=, OnBootSec= or OnStartupSec="},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const CrontabLine job = TranslateSystemdTimer("tidy.timer", c.timer, c.service, c.found);
        EXPECT_EQ(job.source, "tidy.timer");
        std::string fate = job.reason.utf8_string();
        if (job.fate == CrontabLine::Fate::Job) {
            fate = "job " + job.command.utf8_string();
            if (job.atStart)
                fate += " | start " + job.startDelay.utf8_string();
            for (const wxString& condition : job.conditions)
                fate += " | " + condition.utf8_string();
            EXPECT_EQ(job.description, "Tidy downloads");
        }
        EXPECT_EQ(fate, c.fate);
    }
}

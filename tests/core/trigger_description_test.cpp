// The sentence of every trigger kind, one table per language: each row a
// kind, a CONDITION and the sentence the user reads.

#include <gtest/gtest.h>
#include <wx/filename.h>

#include "core/i18n/ui_language.h"
#include "core/triggers/trigger.h"
#include "core/triggers/trigger_description.h"

namespace {

struct Row {
    std::uint32_t kind;
    const char* condition;
    const char* sentence;  // UTF-8
};

void Check(const char* language, std::initializer_list<Row> rows)
{
    ASSERT_TRUE(InstallTranslations(language, CatalogueFolders(wxFileName(CADRELLE_BINARY).GetPath())));
    for (const Row& row : rows)
        EXPECT_EQ(DescribeTrigger(row.kind, row.condition).utf8_string(), row.sentence)
            << "kind " << row.kind << ", condition \"" << row.condition << "\"";
    InstallTranslations(kUiLanguageEn, {});
}

constexpr std::uint32_t kCron = NTriggerTypeCron, kInterval = NTriggerTypeInterval;

TEST(TriggerDescription, English)
{
    Check("en", {
        {NTriggerTypeEveryWeek, "0 30 8 ? * 1-5", "Every weekday at 08:30"},
        {NTriggerTypeEveryMinute, "0 * * * * *", "Every minute"},
        {kCron, "* * * * * *", "Every second"},
        {NTriggerTypeEveryHour, "0 0 * * * ?", "Every hour"},
        {NTriggerTypeEveryHour, "0 15 * * * ?", "At minute 15 of every hour"},
        {NTriggerTypeEveryDay, "0 0,30 8 * * ?", "Every day at 08:00 and 08:30"},
        {kCron, "0 0-5 14 ? * WED", "Every minute from 14:00 to 14:05, every Wednesday"},
        // Steps: even ones are a frequency, others are said with their ends.
        {kInterval, "0 0/15 * * * ?", "Every 15 minutes"},
        {kInterval, "0 0/7 * * * ?", "Every 7 minutes from minute 0 to 56 of every hour"},
        {kInterval, "0/45 * * * * ?", "At seconds 0 and 45 of every minute"},
        {kInterval, "0/7 * * * * ?", "Every 7 seconds from second 0 to 56 of every minute"},
        {kInterval, "0 0 0/6 * * ?", "Every 6 hours"},
        {kInterval, "0 0 0/5 * * ?", "Every 5 hours from 00:00 to 20:00"},
        {kCron, "0 30 */2 * * ?", "Every 2 hours from 00:30 to 22:30"},
        {kCron, "0 5/15 * * * ?", "Every 15 minutes from minute 5 to 50 of every hour"},
        {kCron, "0 0/25 * * * ?", "At minutes 0, 25 and 50 of every hour"},
        {kCron, "0 0 8-18/4 * * ?", "Every day at 08:00, 12:00 and 16:00"},
        {kCron, "0 */45 9-17 * * ?", "At minutes 0 and 45 between 09:00 and 17:59"},
        {kCron, "*/10 * 9-11,14-17 ? * MON-FRI",
         "Every 10 seconds between 09:00 and 11:59 and between 14:00 and 17:59, every weekday"},
        {kCron, "0 0 1,2,4,7,11,16,22 * * ?", "At minute 0 during hours 1, 2, 4, 7, 11, 16 and 22"},
        {kCron, "* 30 8 * * ?", "Every second from 08:30:00 to 08:30:59"},
        {kCron, "* 30 * * * ?", "Every second in minute 30 of every hour"},
        {kCron, "0/20 0-5 * * * ?", "Every 20 seconds in minutes 0-5 of every hour"},
        {kCron, "0 0,30 */2 * * ?", "Every 30 minutes during hours 0, 2, ..., 22"},
        {kCron, "0 0 6 1/7 * ?", "On the 1st, 8th, ..., 29th of every month at 06:00"},
        {kCron, "15 30 8 ? * SUN,SAT", "Every Sunday and Saturday at 08:30:15"},
        {kCron, "0 0 12 ? * 0,2-4", "Every Sunday and Tuesday-Thursday at 12:00"},
        {kCron, "0 0 12 ? 1/2 0/2", "Every Sunday, Tuesday, Thursday and Saturday in January, March, May, July, "
                                    "September and November at 12:00"},
        {kCron, "0 0 8 ? 3-10 MON-FRI", "Every weekday in March-October at 08:00"},
        {kCron, "0 0 0 ? 2 *", "Every day in February at 00:00"},
        // Days of the month, alone, with months, with a weekday.
        {NTriggerTypeEveryMonth, "0 0 9 1,15 * ?", "On the 1st and 15th of every month at 09:00"},
        {NTriggerTypeEveryMonth, "0 0 12 31 * ?", "On the 31st of every month at 12:00 (only in months that have that day)"},
        {kCron, "0 0 9 1-5 JAN,JUL ?", "On the 1st-5th of January and July at 09:00"},
        {kCron, "0 0 0 29-31 1,2 ?", "On the 29th-31st of January and February at 00:00 (only in months that have that day)"},
        {NTriggerTypeEveryYear, "0 0 0 1 1 ?", "Every year on January 1 at 00:00"},
        {NTriggerTypeEveryYear, "0 0 12 29 2 ?", "Every year on February 29 at 12:00 (leap years only)"},
        {kCron, "0 0 0 13 * FRI", "At 00:00, on the 13th of every month, if it is a Friday"},
        {kCron, "0 14 7 24 11 2", "At 07:14, every year on November 24, if it is a Tuesday"},
        {kCron, "0 0 0 29 2 1,3", "At 00:00, every year on February 29, if it is a Monday or Wednesday (leap years only)"},
        {kCron, "0 0 0 30 2 ?", "Never fires: none of the chosen months has the chosen day"},
        {kCron, "0 0 0 31 2,4 ?", "Never fires: none of the chosen months has the chosen day"},
        {kCron, "0 0 25 * * ?", "Malformed condition: Specified range exceeds maximum"},
        {kCron, "0 0 * * *", "Malformed condition: cron expression must have six fields"},
        {kCron, "0 0 9 ? * mon", "Malformed condition: Value must be a number"},
        // The kinds with a year, a count-down, the start and idleness.
        {NTriggerTypeSpecTime, "0 0 12 1 1 ? 2031", "Once, on 2031-01-01 at 12:00"},
        {NTriggerTypeSpecTime, "30 15 9 29 2 ? 2028", "Once, on 2028-02-29 at 09:15:30"},
        {NTriggerTypeSpecTime, "0 0 12 1 1", "Malformed condition: a moment needs seven numbers"},
        {NTriggerTypeCountDown, "0 40 19 24 11 2026 0 0 10 0", "Once, on 2026-11-24 at 19:40 (a count-down of 10 minutes)"},
        {NTriggerTypeCountDown, "0 0 0 1 1", "Malformed condition: a count-down needs at least six numbers"},
        {NTriggerTypeWithStart, "0 0 5 0 - -", "5 minutes after Cadrelle starts"},
        {NTriggerTypeWithStart, "1 2 0 30 - -", "1 day, 2 hours and 30 seconds after Cadrelle starts"},
        {NTriggerTypeWithStart, "0 0 0 0 - -", "When Cadrelle starts"},
        {NTriggerTypeWithStart, "0 1 -90 0 - -", "Never fires: the delay after Cadrelle starts is negative"},
        {NTriggerTypeIdleTimeout, "- 10 - - - -", "After 10 minutes without keyboard or mouse input"},
        {NTriggerTypeIdleTimeout, "1 - - - - -", "After 1 second without keyboard or mouse input"},
        {NTriggerTypeIdleTimeout, "- - 0 - - -", "Never fires: the idle time is not a positive number"},
    });
}

// The same awkward cases: each language puts the parts in its own order.
TEST(TriggerDescription, SimplifiedChinese)
{
    Check("zh_CN", {
        {NTriggerTypeEveryWeek, "0 30 8 ? * 1-5", "每个工作日 08:30"},
        {kInterval, "0 0/15 * * * ?", "每 15 分钟"},
        {kInterval, "0 0/7 * * * ?", "每小时的第 0 至 56 分钟之间每 7 分钟"},
        {kInterval, "0/45 * * * * ?", "每分钟的第 0、45 秒"},
        {kCron, "0 */45 9-17 * * ?", "09:00 至 17:59，第 0、45 分钟"},
        {kCron, "*/10 * 9-11,14-17 ? * MON-FRI", "每个工作日，09:00 至 11:59、14:00 至 17:59，每 10 秒"},
        {kCron, "0 0 12 ? * 0,2-4", "每周日、周二至周四 12:00"},
        {kCron, "0 0 8 ? 3-10 MON-FRI", "3 月至10 月的每个工作日 08:00"},
        {NTriggerTypeEveryMonth, "0 0 12 31 * ?", "每月 31 日 12:00（仅限有该日期的月份）"},
        {kCron, "0 0 9 1-5 JAN,JUL ?", "1 月、7 月的 1 日至5 日 09:00"},
        {NTriggerTypeEveryYear, "0 0 12 29 2 ?", "每年 2 月 29 日 12:00（仅限闰年）"},
        {kCron, "0 0 0 13 * FRI", "每月 13 日，且当天是周五，于 00:00"},
        {kCron, "0 0 0 30 2 ?", "永不触发：所选月份中没有所选的日期"},
        {kCron, "0 0 25 * * ?", "条件格式错误：指定的范围超过最大值"},
        {NTriggerTypeSpecTime, "0 0 12 1 1 ? 2031", "仅一次，于 2031-01-01 12:00"},
        {NTriggerTypeCountDown, "0 40 19 24 11 2026 0 0 10 0", "仅一次，于 2026-11-24 19:40（倒计时 10 分钟）"},
        {NTriggerTypeWithStart, "1 2 0 30 - -", "Cadrelle 启动 1 天、2 小时、30 秒后"},
        {NTriggerTypeIdleTimeout, "- 10 - - - -", "键盘和鼠标无操作 10 分钟后"},
    });
}

TEST(TriggerDescription, Japanese)
{
    Check("ja", {
        {NTriggerTypeEveryWeek, "0 30 8 ? * 1-5", "毎週月曜日～金曜日 08:30"},
        {kInterval, "0 0/15 * * * ?", "15 分ごと"},
        {kInterval, "0 0/7 * * * ?", "毎時 0～56 分の間 7 分ごと"},
        {kInterval, "0/45 * * * * ?", "毎分 0、45 秒"},
        {kCron, "0 */45 9-17 * * ?", "09:00～17:59 の間、0、45 分"},
        {kCron, "*/10 * 9-11,14-17 ? * MON-FRI", "毎週月曜日～金曜日、09:00～11:59、14:00～17:59 の間、10 秒ごと"},
        {kCron, "0 0 12 ? * 0,2-4", "毎週日曜日、火曜日～木曜日 12:00"},
        {kCron, "0 0 8 ? 3-10 MON-FRI", "3 月～10 月の毎週月曜日～金曜日 08:00"},
        {NTriggerTypeEveryMonth, "0 0 12 31 * ?", "毎月 31 日 12:00 (その日がある月のみ)"},
        {kCron, "0 0 9 1-5 JAN,JUL ?", "1 月、7 月の 1 日～5 日 09:00"},
        {NTriggerTypeEveryYear, "0 0 12 29 2 ?", "毎年 2 月 29 日 12:00 (うるう年のみ)"},
        {kCron, "0 0 0 13 * FRI", "毎月 13 日 (金曜日の場合のみ)、00:00"},
        {kCron, "0 0 0 30 2 ?", "発動しません: 選択した月に選択した日がありません"},
        {NTriggerTypeSpecTime, "0 0 12 1 1 ? 2031", "1 回のみ、2031-01-01 12:00"},
        {NTriggerTypeCountDown, "0 40 19 24 11 2026 0 0 10 0", "1 回のみ、2026-11-24 19:40 (カウントダウン 10 分)"},
        {NTriggerTypeWithStart, "0 0 5 0 - -", "Cadrelle の起動から 5 分後"},
        {NTriggerTypeIdleTimeout, "- - 2 - - -", "キーボードとマウスの操作がないまま 2 時間経ったとき"},
    });
}

}  // namespace

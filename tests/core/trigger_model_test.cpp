// The date-time text of the data file.

#include <gtest/gtest.h>

#include "core/datetime_text.h"
#include "test_support.h"

TEST(DateTimeText, ReadsFieldsInOrderAndIgnoresTheSixthToken)
{
    const wxDateTime start = Local(2026, 1, 31, 12, 0, 0, 500);
    const struct { int line; const char* text; wxDateTime expected; } cases[] = {
        {__LINE__, "5 4 3 2 1 * 2027", Local(2027, 1, 2, 3, 4, 5)},
        {__LINE__, "5 4 3 2 1 ? 2027", Local(2027, 1, 2, 3, 4, 5)},
        {__LINE__, "5 4 3 2 1 0 2027", Local(2027, 1, 2, 3, 4, 5)},
        {__LINE__, "  5   4 3 2 1 * 2027 ", Local(2027, 1, 2, 3, 4, 5)},
        // Day 1 is set before the month, so the old day 31 cannot overflow
        // into March; a day February lacks leaves day 1.
        {__LINE__, "0 0 0 28 2 * 2026", Local(2026, 2, 28, 0, 0, 0)},
        {__LINE__, "0 0 0 31 2 * 2026", Local(2026, 2, 1, 0, 0, 0)},
        {__LINE__, "0 0 0 29 2 * 2028", Local(2028, 2, 29, 0, 0, 0)},
        // Out of range fields keep the previous value.
        {__LINE__, "61 4 3 2 1 * 2027", Local(2027, 1, 2, 3, 4, 0)},
        {__LINE__, "0 0 0 1 1 0 1999", Local(1999, 1, 1, 0, 0, 0)},
        {__LINE__, "59 59 23 31 12 0 2999", Local(2999, 12, 31, 23, 59, 59)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        wxDateTime dt = start;
        ASSERT_TRUE(ReadDateTimeText(c.text, dt));
        EXPECT_EQ(dt, c.expected) << dt.FormatISOCombined() << " " << dt.GetMillisecond();
    }
    wxDateTime untouched = start;
    EXPECT_FALSE(ReadDateTimeText("1 2 3 4 5 *", untouched));
    EXPECT_FALSE(ReadDateTimeText("", untouched));
    EXPECT_EQ(untouched, start);
}

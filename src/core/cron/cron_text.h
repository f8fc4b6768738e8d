#pragma once
// Small text helpers of the cron parser.

#include <string>
#include <vector>

namespace cron {

// Splits at every `sep`: "a,,b" gives "a", "", "b" and "a," gives "a", "".
// An empty text gives no parts at all.
std::vector<std::string> SplitText(const std::string& text, char sep);

// A non-empty run of decimal digits; anything else throws bad_cronexpr.
// Values too large for the fields saturate instead of wrapping, so that they
// fail the range checks.
unsigned ToUnsigned(const std::string& text);

}  // namespace cron

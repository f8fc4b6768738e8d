#pragma once
// `cadrelle --describe "EXPR"`: prints the sentence the trigger list shows
// for a cron expression, in the user's language.

#include <ostream>
#include <string>
#include <vector>

// `args` are the words after --describe. Returns the exit code: 0 with the
// sentence on `out`; 2 for a malformed expression (its sentence on `err`)
// or bad usage.
int RunDescribeCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

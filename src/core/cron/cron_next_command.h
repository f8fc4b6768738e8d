#pragma once
// `cadrelle --cron-next "EXPR" [--count N] [--from "YYYY-MM-DD HH:MM:SS"]`:
// prints the next N moments (default 5) of a cron expression after FROM
// (default: now), one per line in local time.

#include <ctime>
#include <ostream>
#include <string>
#include <vector>

// `args` are the words after --cron-next. Returns the process exit code:
// 0 on success (also when fewer than N moments exist), 2 on bad usage or a
// malformed expression.
int RunCronNextCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                       std::time_t now);

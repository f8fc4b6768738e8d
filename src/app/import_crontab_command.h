#pragma once
// `cadrelle --import-crontab [FILE|-] [--dry-run]`: every line of a crontab
// (the user's own, read with `crontab -l`, by default) with what it becomes
// or why not; without --dry-run the jobs are added to the data file. While
// a scheduler of this user runs, the data file is its own: the command then
// refuses (exit 3) and changes nothing.

#include <iosfwd>
#include <string>

#include <wx/string.h>

int RunImportCrontabCommand(const wxString& appDir, const std::string& file, bool dryRun, std::istream& in,
                            std::ostream& out, std::ostream& err);

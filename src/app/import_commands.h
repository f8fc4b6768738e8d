#pragma once
// The command-line imports and the export. `--import-crontab [FILE|-]
// [--dry-run]`: every line of a crontab (the user's own, read with
// `crontab -l`, by default) with what it becomes or why not; without
// --dry-run the jobs are added to the data file. `--export FILE [JID...]`
// writes jobs to a file; `--import FILE` adds them. While a scheduler of this
// user runs, the data file is its own: the imports then refuse (exit 3) and
// change nothing.

#include <iosfwd>
#include <cstdint>
#include <string>
#include <vector>

#include <wx/string.h>

int RunImportCrontabCommand(const wxString& appDir, const std::string& file, bool dryRun, std::istream& in,
                            std::ostream& out, std::ostream& err);

int RunExportCommand(const wxString& appDir, const std::string& file, const std::vector<std::int32_t>& jids,
                     std::ostream& out, std::ostream& err);
int RunImportJobsCommand(const wxString& appDir, const std::string& file, std::ostream& out, std::ostream& err);

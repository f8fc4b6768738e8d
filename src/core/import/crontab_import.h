#pragma once
// A crontab, line by line, as Cadrelle jobs: each schedule line becomes an
// Exec DOS Command job with Cron triggers (or With Start for @reboot), each
// other line says what it does or why it cannot be brought over. Pure: no
// file is read or written here (see docs/AGENDA_AND_IMPORT.md).

#include <cstdint>
#include <string>
#include <vector>

#include <wx/string.h>

#include "core/scheduler.h"

struct CrontabLine {
    enum class Fate {
        Job,          // becomes a job
        Environment,  // sets a variable for the lines below it
        Ignored,      // blank or comment
        Refused       // cannot be brought over exactly: `reason` says why
    };
    int number = 0;   // 1-based
    wxString text;    // as written
    wxString source;  // empty for a crontab line; the unit's name for a systemd timer
    Fate fate = Fate::Ignored;
    wxString reason;  // Refused: why; Environment: what it does
    // Job:
    std::vector<wxString> conditions;  // six-field expressions; empty with atStart
    bool atStart = false;              // @reboot: With Start
    wxString startDelay = "0 0 0 0";   // With Start: days hours minutes seconds
    wxString command;                  // what the job runs
    wxString description;              // the job's description
};

// Month (1..12) and weekday (0..6, Sunday 0) names, three letters in any
// case, as numbers; every other character as it was.
std::string CronNamesAsNumbers(const std::string& field, bool weekday);

// Every line of `text` (UTF-8) with its fate.
std::vector<CrontabLine> TranslateCrontab(const std::string& text);

// The job edits (new JIDs and TIDs not used in `scheduler`) for the lines
// that become jobs.
std::vector<JobEdit> CrontabJobEdits(const std::vector<CrontabLine>& lines, const Scheduler& scheduler);

// The crontab with the lines that became jobs commented out ("#cadrelle: "
// in front), everything else as it was; what the user may install after an
// import, never without asking.
std::string CommentOutImported(const std::string& text, const std::vector<CrontabLine>& lines);

// One line of the preview: "line N: <fate>" in the user's language.
wxString DescribeCrontabLine(const CrontabLine& line);

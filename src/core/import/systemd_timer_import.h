#pragma once
// systemd user timers (a .timer with its .service) as Cadrelle jobs, offered
// in the crontab import's preview: OnCalendar= expressions a Cron trigger can
// say exactly become Cron triggers (one per OnCalendar= line), OnBootSec= and
// OnStartupSec= become With Start; anything else refuses the timer with the
// line and the reason. Pure: the caller reads the files.

#include <string>
#include <vector>

#include "core/import/crontab_import.h"

// One timer as a preview line: Fate::Job with its conditions (or atStart and
// the delay in `startDelay`), or Fate::Refused with "line N: reason".
// `source` of the result is `timerName`.
CrontabLine TranslateSystemdTimer(const std::string& timerName, const std::string& timerText,
                                  const std::string& serviceText, bool serviceFound);

// The six-field condition for one OnCalendar= value; empty with the reason
// when a Cron trigger cannot say it exactly.
std::string OnCalendarCondition(const std::string& value, wxString& reason);

// The user's timer folder: $XDG_CONFIG_HOME/systemd/user (~/.config/...).
wxString UserSystemdTimerFolder();
// Every *.timer of `folder` with its .service beside it, translated, in name
// order; none when the folder does not exist.
std::vector<CrontabLine> ReadSystemdTimers(const wxString& folder);

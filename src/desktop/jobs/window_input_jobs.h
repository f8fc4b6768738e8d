#pragma once

class JobActions;
// The job kinds that act on the desktop's windows, screen and input devices:
// 7 "Auto Screenshot", 9 "Close App", 13 "Send Key", 14 "Key Typing" and
// 15 "Mouse Click". They need an X11 session; where it is missing (no
// display, a Wayland session) they say so in a message box and the log.

#include <cstdint>
#include <optional>

#include <wx/string.h>

class Job;
class SessionContext;

// Registers the five actions with SetJobAction. Call at start-up, before the
// engine starts any thread.
void RegisterWindowAndInputJobActions(JobActions& actions);

// Helpers the five share.

// A whole decimal number (blanks around it and a sign allowed), or nothing.
std::optional<long> ParseWholeNumber(const wxString& text);
// "DPI Scale Factor(%)": empty means 100; otherwise a whole number above 0.
std::optional<long> ParseScalePercent(const wxString& text);
// value × scale / 100, truncated toward zero as integer division does.
long ApplyScale(long value, long scale);
// True when the session can run the job; otherwise tells the user and the
// log what is missing and returns false.
bool RequireDisplaySession(const Job& job, SessionContext& context);
// A problem with the job's own parameters: a message box captioned
// "Cadrelle" and a log line.
void ReportJobProblem(const Job& job, SessionContext& context, const wxString& text);

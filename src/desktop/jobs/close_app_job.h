#pragma once
// Kind 9 "Close App": parameter 0 lists window titles, each between double
// quotes. The first top-level window with exactly each title is asked to
// close; the job does not wait for it.

#include <vector>

#include <wx/string.h>

class Job;
class SessionContext;

// The titles of the list: cut at every double quote, each piece trimmed,
// empty pieces dropped.
std::vector<wxString> SplitTitleList(const wxString& list);

void RunCloseAppJob(const Job& job, SessionContext& context);

#pragma once
// When this run of the program started: With Start triggers count from it.

#include <wx/datetime.h>

// Under the shared lock. Until set, the moment of the first call.
wxDateTime GetAppStartTime();
void SetAppStartTime(const wxDateTime& moment);

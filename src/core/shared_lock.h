#pragma once
// The application's shared lock: the scheduler lock that guards the time of
// the first unsaved change, the application start time and the few trigger
// fields written on the miss-fire and idle paths.

#include <wx/thread.h>

wxCriticalSection& SharedLock();

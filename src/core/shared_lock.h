#pragma once
// The application's shared lock: the scheduler lock that guards stopCheck, the
// pause and silent flags, the application start time and the few trigger
// fields written on the miss-fire and idle paths.

#include <wx/thread.h>

wxCriticalSection& SharedLock();

#include "core/app_start_time.h"

#include "core/clock.h"
#include "core/shared_lock.h"

namespace {
wxDateTime g_appStart;
}

wxDateTime GetAppStartTime()
{
    wxCriticalSectionLocker lock(SharedLock());
    if (!g_appStart.IsValid())
        g_appStart = GetClock().Now();
    return g_appStart;
}

void SetAppStartTime(const wxDateTime& moment)
{
    wxCriticalSectionLocker lock(SharedLock());
    g_appStart = moment;
}

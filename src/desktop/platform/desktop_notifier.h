#pragma once
// Desktop notifications: a short message that the desktop shows and takes
// away by itself. Any thread; the call waits for the notification service to
// answer (a few milliseconds), never for the user.

#include <wx/string.h>

struct NotifyOutcome {
    bool ok = false;
    // Why it could not be shown, for the log and the fallback window.
    wxString reason;
};

NotifyOutcome SendDesktopNotification(const wxString& title, const wxString& body);

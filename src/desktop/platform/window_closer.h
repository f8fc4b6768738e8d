#pragma once
// Asking another program's top-level window, found by its exact title, to
// close: the polite request a click on its close button makes. We never wait
// for the window to go and never end the program that owns it.

#include <wx/string.h>

enum class CloseRequestResult {
    Sent,        // the request went to the first window with the title
    NotFound,    // no top-level window has exactly that title
    Unavailable  // no usable display, or the window cannot be asked
};

struct CloseRequestOutcome {
    CloseRequestResult result = CloseRequestResult::NotFound;
    // Sent: how and to which window, for the log. Unavailable: why.
    wxString detail;
};

// Any thread. `title` must match the window's title exactly (case and
// blanks included).
CloseRequestOutcome RequestWindowClose(const wxString& title);

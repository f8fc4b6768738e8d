#pragma once
// The one harness for in-process GUI tests: the tests run inside the real
// wx event loop of a test application (see gui_test_main.cpp), under the
// desktop_session.sh launcher (Xvfb, a private session bus, openbox).
//
// Modal message boxes are caught with wxTEST_DIALOG (wx/testing.h); waiting
// is always for a condition with a deadline, never a fixed sleep.

#include <functional>
#include <string>

#include <wx/string.h>

class wxWindow;

namespace guitest {

// Runs the event loop until `condition` holds or `timeoutMs` pass; true when
// it held.
bool WaitFor(const std::function<bool()>& condition, int timeoutMs = 5000);
// Lets pending events (sizes, paints, queued calls) run once.
void Settle();
// A fresh application folder for one test; HOME and the XDG folders of the
// whole test program point into a private folder set up before the
// application object exists (see gui_test_main.cpp).
wxString FreshAppDir();
// The private HOME of this test program.
wxString TestHome();
// Saves what the window shows as a PNG under $CADRELLE_SCREENSHOT_DIR (when
// set) with the given name; returns the path written or an empty text.
wxString SaveScreenshot(wxWindow* window, const wxString& name);
// The first descendant of `parent` (or of any top-level window when null)
// whose name is `name`.
wxWindow* FindByName(const wxString& name, wxWindow* parent = nullptr);

}  // namespace guitest

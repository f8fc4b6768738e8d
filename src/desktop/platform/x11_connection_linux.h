#pragma once
// One X connection per call, with X errors trapped for that connection only.
// Jobs run on worker threads while the GUI owns its own connection, so we
// never share one; libX11 1.8 initialises its thread support by itself, and
// XInitThreads is called once before our first connection for older ones.

#include <string>

#include <X11/Xlib.h>
#include <wx/string.h>

class X11Connection {
public:
    // Opens $DISPLAY, or explains in Problem() why not (also a Wayland
    // session, where X11 only sees XWayland clients).
    X11Connection();
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    explicit operator bool() const { return m_display != nullptr; }
    Display* Get() const { return m_display; }
    Window Root() const { return DefaultRootWindow(m_display); }
    const wxString& Problem() const { return m_problem; }

    // Waits for the server to handle every request so far and returns the
    // first X error code they raised (0 for none), forgetting it. A window
    // may vanish between our finding it and asking it something: that is an
    // error here, never the end of the process.
    int SyncAndTakeError();
    Atom Intern(const char* name) const { return XInternAtom(m_display, name, False); }

private:
    Display* m_display = nullptr;
    wxString m_problem;
};

// The UTF-8 title of a window: _NET_WM_NAME, else WM_NAME in whatever
// encoding it declares. False when it has neither (or is gone).
bool ReadWindowTitle(X11Connection& x, Window window, std::string& title);

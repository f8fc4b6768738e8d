#include "desktop/platform/display_session.h"

#include <cstdlib>
#include <map>
#include <mutex>

#include <X11/Xatom.h>
#include <X11/Xutil.h>

#include "core/translate.h"
#include "desktop/platform/x11_connection_linux.h"

namespace {

// The error handler is process-wide; errors on connections we did not open
// (the GUI's) go on to whoever handled them before.
std::mutex g_errorMutex;
std::map<Display*, int> g_firstError;
XErrorHandler g_previousHandler = nullptr;

int TrapError(Display* display, XErrorEvent* event)
{
    {
        std::lock_guard<std::mutex> lock(g_errorMutex);
        auto it = g_firstError.find(display);
        if (it != g_firstError.end()) {
            if (it->second == 0)
                it->second = event->error_code;
            return 0;
        }
    }
    return g_previousHandler ? g_previousHandler(display, event) : 0;
}

void InstallErrorTrapOnce()
{
    static std::once_flag once;
    std::call_once(once, [] {
        XInitThreads();
        g_previousHandler = XSetErrorHandler(TrapError);
    });
}

bool IsWaylandSession()
{
    const char* type = std::getenv("XDG_SESSION_TYPE");
    return type && wxString(type).Lower() == "wayland";
}

}  // namespace

X11Connection::X11Connection()
{
    if (IsWaylandSession()) {
        m_problem = TranslateFromAnyThread(
            "This is a Wayland session (XDG_SESSION_TYPE=wayland): window titles, screen capture and simulated "
            "keys and clicks need an X11 session.");
        return;
    }
    const char* name = std::getenv("DISPLAY");
    if (!name || !*name) {
        m_problem = TranslateFromAnyThread("There is no X display: the DISPLAY environment variable is not set.");
        return;
    }
    InstallErrorTrapOnce();
    m_display = XOpenDisplay(nullptr);
    if (!m_display) {
        m_problem = wxString::Format(TranslateFromAnyThread("The X display %s does not answer."),
                                     wxString::FromUTF8(name));
        return;
    }
    std::lock_guard<std::mutex> lock(g_errorMutex);
    g_firstError[m_display] = 0;
}

X11Connection::~X11Connection()
{
    if (!m_display)
        return;
    XSync(m_display, False);
    XCloseDisplay(m_display);
    std::lock_guard<std::mutex> lock(g_errorMutex);
    g_firstError.erase(m_display);
}

int X11Connection::SyncAndTakeError()
{
    XSync(m_display, False);
    std::lock_guard<std::mutex> lock(g_errorMutex);
    int& slot = g_firstError[m_display];
    const int code = slot;
    slot = 0;
    return code;
}

bool ReadWindowTitle(X11Connection& x, Window window, std::string& title)
{
    Display* display = x.Get();
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long after = 0;
    unsigned char* data = nullptr;
    const Atom netWmName = x.Intern("_NET_WM_NAME");
    const Atom utf8 = x.Intern("UTF8_STRING");
    if (XGetWindowProperty(display, window, netWmName, 0, 4096, False, utf8, &type, &format, &count, &after,
                           &data) == Success &&
        data) {
        const bool ok = type == utf8 && format == 8;
        if (ok)
            title.assign(reinterpret_cast<const char*>(data), count);
        XFree(data);
        if (ok)
            return true;
    }
    XTextProperty property{};
    if (!XGetWMName(display, window, &property) || !property.value)
        return false;
    char** list = nullptr;
    int pieces = 0;
    bool ok = false;
    // Latin-1 STRING, COMPOUND_TEXT or UTF8_STRING, whatever the client set.
    if (Xutf8TextPropertyToTextList(display, &property, &list, &pieces) >= Success && list) {
        title.clear();
        for (int i = 0; i < pieces; ++i)
            title += list[i];
        ok = true;
        XFreeStringList(list);
    }
    XFree(property.value);
    return ok;
}

wxString DisplaySessionProblem()
{
    X11Connection x;
    return x ? wxString() : x.Problem();
}

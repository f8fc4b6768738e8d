// With a window manager the request goes through it (_NET_CLOSE_WINDOW to the
// root, EWMH), so it can do what its own close button does. Without one we
// find the window ourselves and send it WM_DELETE_WINDOW, which is what a
// window manager would send.

#include "desktop/platform/window_closer.h"

#include <deque>
#include <string>
#include <vector>

#include <X11/Xatom.h>
#include <X11/Xutil.h>

#include "desktop/platform/x11_connection_linux.h"

namespace {

std::vector<Window> WindowListProperty(X11Connection& x, Window window, Atom property)
{
    std::vector<Window> windows;
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(x.Get(), window, property, 0, 65536, False, XA_WINDOW, &type, &format, &count, &after,
                           &data) != Success)
        return windows;
    if (data && type == XA_WINDOW && format == 32) {
        // Format 32 properties come back as longs, whatever their size.
        const unsigned long* ids = reinterpret_cast<const unsigned long*>(data);
        windows.assign(ids, ids + count);
    }
    if (data)
        XFree(data);
    return windows;
}

// An EWMH window manager names a child window of its own on the root, and
// that window names itself too; a stale property left by a manager that has
// gone fails the second test.
bool HasEwmhWindowManager(X11Connection& x)
{
    const Atom check = x.Intern("_NET_SUPPORTING_WM_CHECK");
    const std::vector<Window> fromRoot = WindowListProperty(x, x.Root(), check);
    if (fromRoot.size() != 1)
        return false;
    const std::vector<Window> fromChild = WindowListProperty(x, fromRoot[0], check);
    x.SyncAndTakeError();
    return fromChild.size() == 1 && fromChild[0] == fromRoot[0];
}

bool TitleIs(X11Connection& x, Window window, const std::string& wanted)
{
    std::string title;
    const bool read = ReadWindowTitle(x, window, title);
    x.SyncAndTakeError();
    return read && title == wanted;
}

bool AcceptsDeleteWindow(X11Connection& x, Window window)
{
    Atom* protocols = nullptr;
    int count = 0;
    bool accepts = false;
    if (XGetWMProtocols(x.Get(), window, &protocols, &count) && protocols) {
        const Atom deleteWindow = x.Intern("WM_DELETE_WINDOW");
        for (int i = 0; i < count && !accepts; ++i)
            accepts = protocols[i] == deleteWindow;
        XFree(protocols);
    }
    x.SyncAndTakeError();
    return accepts;
}

wxString WindowText(Window window)
{
    return wxString::Format("0x%lx", static_cast<unsigned long>(window));
}

CloseRequestOutcome CloseThroughWindowManager(X11Connection& x, const std::vector<Window>& clients,
                                              const std::string& title)
{
    for (Window client : clients) {
        if (!TitleIs(x, client, title))
            continue;
        // A window manager ends a client that cannot be asked (as its close
        // button would); we only ever ask.
        if (!AcceptsDeleteWindow(x, client))
            return {CloseRequestResult::Unavailable,
                    "window " + WindowText(client) + " has the title but does not accept a close request "
                    "(no WM_DELETE_WINDOW), and we do not end programs"};
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = client;
        event.xclient.message_type = x.Intern("_NET_CLOSE_WINDOW");
        event.xclient.format = 32;
        event.xclient.data.l[0] = CurrentTime;
        event.xclient.data.l[1] = 2;  // source: a tool acting for the user
        XSendEvent(x.Get(), x.Root(), False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
        if (x.SyncAndTakeError() != 0)
            return {CloseRequestResult::Unavailable, "the window manager refused the close request"};
        return {CloseRequestResult::Sent, "_NET_CLOSE_WINDOW for window " + WindowText(client)};
    }
    return {CloseRequestResult::NotFound, wxString()};
}

// Without a window manager the top-level windows are the root's children;
// we look further down too, in case a manager without EWMH has framed them.
CloseRequestOutcome CloseWithoutWindowManager(X11Connection& x, const std::string& title)
{
    std::deque<Window> pending{x.Root()};
    Window unwilling = None;
    while (!pending.empty()) {
        const Window parent = pending.front();
        pending.pop_front();
        Window rootReturn = None;
        Window parentReturn = None;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(x.Get(), parent, &rootReturn, &parentReturn, &children, &count))
            continue;
        std::vector<Window> level(children, children + count);
        if (children)
            XFree(children);
        x.SyncAndTakeError();
        for (Window window : level) {
            if (!TitleIs(x, window, title)) {
                pending.push_back(window);
                continue;
            }
            if (!AcceptsDeleteWindow(x, window)) {
                if (unwilling == None)
                    unwilling = window;
                continue;
            }
            XEvent event{};
            event.xclient.type = ClientMessage;
            event.xclient.window = window;
            event.xclient.message_type = x.Intern("WM_PROTOCOLS");
            event.xclient.format = 32;
            event.xclient.data.l[0] = static_cast<long>(x.Intern("WM_DELETE_WINDOW"));
            event.xclient.data.l[1] = CurrentTime;
            XSendEvent(x.Get(), window, False, NoEventMask, &event);
            if (x.SyncAndTakeError() != 0)
                return {CloseRequestResult::NotFound, wxString()};  // it went away meanwhile
            return {CloseRequestResult::Sent, "WM_DELETE_WINDOW to window " + WindowText(window)};
        }
    }
    if (unwilling != None)
        return {CloseRequestResult::Unavailable,
                "window " + WindowText(unwilling) + " has the title but does not accept a close request "
                "(no WM_DELETE_WINDOW), and we do not end programs"};
    return {CloseRequestResult::NotFound, wxString()};
}

}  // namespace

CloseRequestOutcome RequestWindowClose(const wxString& title)
{
    X11Connection x;
    if (!x)
        return {CloseRequestResult::Unavailable, x.Problem()};
    const std::string wanted = title.utf8_string();
    if (HasEwmhWindowManager(x)) {
        const std::vector<Window> clients = WindowListProperty(x, x.Root(), x.Intern("_NET_CLIENT_LIST"));
        x.SyncAndTakeError();
        return CloseThroughWindowManager(x, clients, wanted);
    }
    return CloseWithoutWindowManager(x, wanted);
}

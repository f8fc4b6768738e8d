#include "x11_test_support.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "core/jobs/job_actions.h"
#include "desktop/jobs/window_input_jobs.h"

TestWindow::TestWindow(const TestWindowOptions& options)
{
    m_display = XOpenDisplay(nullptr);
    if (!m_display)
        return;
    XSetWindowAttributes attributes{};
    attributes.background_pixel = options.rgb;  // the launcher's Xvfb is 24-bit TrueColor 0xRRGGBB
    attributes.override_redirect = options.overrideRedirect ? True : False;
    attributes.event_mask = KeyPressMask | KeyReleaseMask | ButtonPressMask | StructureNotifyMask | ExposureMask;
    m_window = XCreateWindow(m_display, DefaultRootWindow(m_display), options.x, options.y,
                             static_cast<unsigned>(options.width), static_cast<unsigned>(options.height), 0,
                             CopyFromParent, InputOutput, CopyFromParent,
                             CWBackPixel | CWOverrideRedirect | CWEventMask, &attributes);
    XStoreName(m_display, m_window, options.title.c_str());
    if (options.netWmName)
        XChangeProperty(m_display, m_window, XInternAtom(m_display, "_NET_WM_NAME", False),
                        XInternAtom(m_display, "UTF8_STRING", False), 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(options.title.data()),
                        static_cast<int>(options.title.size()));
    if (options.acceptsDeleteWindow) {
        Atom deleteWindow = XInternAtom(m_display, "WM_DELETE_WINDOW", False);
        XSetWMProtocols(m_display, m_window, &deleteWindow, 1);
    }
    XMapRaised(m_display, m_window);
    PumpUntil([this] { return m_mapped; });
}

TestWindow::~TestWindow()
{
    if (m_display)
        XCloseDisplay(m_display);  // the window goes with its connection
}

void TestWindow::Handle(_XEvent& event)
{
    char text[16];
    KeySym sym = NoSymbol;
    if (event.type == MapNotify) {
        m_mapped = true;
    } else if (event.type == MappingNotify) {
        // Keys lent for one character arrive with their new meaning only if
        // we read the new map, as every toolkit does.
        XRefreshKeyboardMapping(&event.xmapping);
    } else if (event.type == ClientMessage) {
        deleteRequests += event.xclient.message_type == XInternAtom(m_display, "WM_PROTOCOLS", False) &&
                          Atom(event.xclient.data.l[0]) == XInternAtom(m_display, "WM_DELETE_WINDOW", False);
    } else if (event.type == KeyPress || event.type == KeyRelease) {
        XLookupString(&event.xkey, text, sizeof text, &sym, nullptr);
        keys.push_back({event.type == KeyPress, sym});
    } else if (event.type == ButtonPress) {
        buttons.push_back({event.xbutton.button, event.xbutton.x, event.xbutton.y, event.xbutton.time});
    }
}

bool TestWindow::PumpUntil(const std::function<bool()>& done, int timeoutMs)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (m_display) {
        XSync(m_display, False);
        while (XPending(m_display)) {
            XEvent event;
            XNextEvent(m_display, &event);
            Handle(event);
        }
        if (done())
            return true;
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

bool TestWindow::WaitUntilManaged(int timeoutMs)
{
    char id[32];
    std::snprintf(id, sizeof id, " 0x%lx,", m_window);
    return PumpUntil([&] {
        std::string list = RunProcess({"xprop", "-root", "_NET_CLIENT_LIST"}).out;
        std::replace(list.begin(), list.end(), '\n', ',');
        return list.find(id) != std::string::npos;
    }, timeoutMs);
}

void TestWindow::TakeFocus()
{
    XSetInputFocus(m_display, m_window, RevertToPointerRoot, CurrentTime);
    XSync(m_display, False);
}

void DisplayJobTest::SetUpTestSuite() { RegisterWindowAndInputJobActions(HarnessContext().Actions()); }
void DisplayJobTest::TearDownTestSuite() {}

char32_t CodePointOfKeysym(unsigned long keysym)
{
    if ((keysym >= 0x20 && keysym <= 0x7e) || (keysym >= 0xa0 && keysym <= 0xff))
        return static_cast<char32_t>(keysym);
    if ((keysym & 0xff000000UL) == 0x01000000UL)
        return static_cast<char32_t>(keysym & 0x00ffffffUL);
    return keysym == 0x20ac ? U'\u20ac' : 0;  // EuroSign, the one legacy keysym a US map may carry
}

bool KeyboardHasKeysym(unsigned long keysym)
{
    Display* display = XOpenDisplay(nullptr);
    const bool has = display && XKeysymToKeycode(display, keysym) != 0;
    if (display)
        XCloseDisplay(display);
    return has;
}

#include "x11_test_support.h"

#include <X11/Xlib.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>


#include <X11/Xatom.h>
#include <X11/Xutil.h>

#include "core/jobs/job_actions.h"
#include "desktop/jobs/window_input_jobs.h"

namespace {

void Sleep(int ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

std::vector<Window> RootWindowList(Display* display, const char* property)
{
    std::vector<Window> windows;
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(display, DefaultRootWindow(display), XInternAtom(display, property, False), 0, 4096, False,
                           XA_WINDOW, &type, &format, &count, &after, &data) == Success &&
        data) {
        const unsigned long* ids = reinterpret_cast<const unsigned long*>(data);
        windows.assign(ids, ids + count);
        XFree(data);
    }
    return windows;
}

unsigned long PixelOf(Display* display, std::uint32_t rgb)
{
    Visual* visual = DefaultVisual(display, DefaultScreen(display));
    auto place = [](unsigned long mask, unsigned value) {
        int shift = 0;
        while (mask && !((mask >> shift) & 1UL))
            ++shift;
        const unsigned long max = mask >> shift;
        return ((value * max / 255UL) << shift) & mask;
    };
    return place(visual->red_mask, (rgb >> 16) & 0xff) | place(visual->green_mask, (rgb >> 8) & 0xff) |
           place(visual->blue_mask, rgb & 0xff);
}

}  // namespace

bool WindowManagerRuns()
{
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return false;
    const bool runs = RootWindowList(display, "_NET_SUPPORTING_WM_CHECK").size() == 1;
    XCloseDisplay(display);
    return runs;
}

TestWindow::TestWindow(const TestWindowOptions& options)
{
    m_display = XOpenDisplay(nullptr);
    if (!m_display)
        return;
    const int screen = DefaultScreen(m_display);
    XSetWindowAttributes attributes{};
    attributes.background_pixel = PixelOf(m_display, options.rgb);
    attributes.override_redirect = options.overrideRedirect ? True : False;
    attributes.event_mask = KeyPressMask | KeyReleaseMask | ButtonPressMask | StructureNotifyMask | ExposureMask;
    m_window = XCreateWindow(m_display, RootWindow(m_display, screen), options.x, options.y,
                             static_cast<unsigned>(options.width), static_cast<unsigned>(options.height), 0,
                             CopyFromParent, InputOutput, CopyFromParent,
                             CWBackPixel | CWOverrideRedirect | CWEventMask, &attributes);
    if (options.wmName)
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
    XSync(m_display, False);
}

TestWindow::~TestWindow()
{
    if (!m_display)
        return;
    XDestroyWindow(m_display, m_window);
    XCloseDisplay(m_display);
}

void TestWindow::Handle(_XEvent& event)
{
    switch (event.type) {
    case MapNotify:
        m_mapped = true;
        break;
    case MappingNotify:
        // Keys lent for one character arrive with their new meaning only if
        // we read the new map, as every toolkit does.
        XRefreshKeyboardMapping(&event.xmapping);
        break;
    case ClientMessage:
        if (event.xclient.message_type == XInternAtom(m_display, "WM_PROTOCOLS", False) &&
            static_cast<Atom>(event.xclient.data.l[0]) == XInternAtom(m_display, "WM_DELETE_WINDOW", False))
            ++deleteRequests;
        break;
    case KeyPress:
    case KeyRelease: {
        char text[16];
        KeySym sym = NoSymbol;
        XLookupString(&event.xkey, text, sizeof text, &sym, nullptr);
        keys.push_back({event.type == KeyPress, sym});
        break;
    }
    case ButtonPress:
        buttons.push_back({event.xbutton.button, event.xbutton.x, event.xbutton.y, event.xbutton.time});
        break;
    default:
        break;
    }
}

bool TestWindow::PumpUntil(const std::function<bool()>& done, int timeoutMs)
{
    if (!m_display)
        return false;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
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
        Sleep(10);
    }
}

void TestWindow::PumpFor(int ms)
{
    PumpUntil([] { return false; }, ms);
}

bool TestWindow::WaitUntilManaged()
{
    return PumpUntil([this] {
        for (Window w : RootWindowList(m_display, "_NET_CLIENT_LIST")) {
            if (w == m_window)
                return true;
        }
        return false;
    });
}

void TestWindow::TakeFocus()
{
    if (!m_display)
        return;
    XSetInputFocus(m_display, m_window, RevertToPointerRoot, CurrentTime);
    XSync(m_display, False);
}

void DisplayJobTest::SetUpTestSuite()
{
    RegisterWindowAndInputJobActions();
}

void DisplayJobTest::TearDownTestSuite()
{
    ClearJobActions();
}

void DisplayJobTest::RunJobWhilePumping(std::uint32_t kind, const ParamList& params,
                                        const std::vector<TestWindow*>& windows)
{
    std::atomic<bool> done{false};
    std::thread worker([&] {
        RunJob(kind, params);
        done = true;
    });
    while (!done) {
        for (TestWindow* window : windows)
            window->PumpFor(5);
    }
    worker.join();
    for (TestWindow* window : windows)
        window->PumpFor(50);
}

char32_t CodePointOfKeysym(unsigned long keysym)
{
    if ((keysym >= 0x20 && keysym <= 0x7e) || (keysym >= 0xa0 && keysym <= 0xff))
        return static_cast<char32_t>(keysym);
    if ((keysym & 0xff000000UL) == 0x01000000UL)
        return static_cast<char32_t>(keysym & 0x00ffffffUL);
    if (keysym == 0x20ac)  // EuroSign, the one legacy keysym a US map may carry
        return U'\u20ac';
    return 0;
}

bool KeyboardHasKeysym(unsigned long keysym)
{
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return false;
    const bool has = XKeysymToKeycode(display, keysym) != 0;
    XCloseDisplay(display);
    return has;
}

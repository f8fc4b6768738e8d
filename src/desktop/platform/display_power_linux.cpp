// Monitor power-off through the X server's DPMS extension, on a display
// connection of our own (the GUI's belongs to the main thread).

#include "desktop/platform/display_power.h"

#include <cerrno>
#include <cstdlib>

#include <X11/Xlib.h>
#include <X11/extensions/dpms.h>

namespace {

class OwnDisplay {
public:
    explicit OwnDisplay(const char* name) : m_display(XOpenDisplay(name)) {}
    ~OwnDisplay()
    {
        if (m_display)
            XCloseDisplay(m_display);
    }
    OwnDisplay(const OwnDisplay&) = delete;
    OwnDisplay& operator=(const OwnDisplay&) = delete;
    Display* Get() const { return m_display; }

private:
    Display* m_display;
};

}  // namespace

SystemOutcome SwitchDisplayOff()
{
    const char* name = std::getenv("DISPLAY");
    if (!name || !*name) {
        const char* wayland = std::getenv("WAYLAND_DISPLAY");
        if (wayland && *wayland)
            return SystemOutcome::Failure(ENXIO, "this is a Wayland session without an X display (DISPLAY is not "
                                                 "set); the display cannot be switched off from here");
        return SystemOutcome::Failure(ENXIO, "there is no X display (DISPLAY is not set)");
    }
    OwnDisplay display(name);
    if (!display.Get())
        return SystemOutcome::Failure(ENXIO, std::string("cannot open the X display \"") + name + "\"");
    int eventBase = 0;
    int errorBase = 0;
    if (!DPMSQueryExtension(display.Get(), &eventBase, &errorBase))
        return SystemOutcome::Failure(ENOTSUP, std::string("the X server of display \"") + name +
                                                   "\" has no DPMS extension (display power management)");
    if (!DPMSCapable(display.Get()))
        return SystemOutcome::Failure(ENOTSUP, std::string("the X server of display \"") + name +
                                                   "\" cannot power its monitors down (not DPMS capable)");
    CARD16 level = 0;
    BOOL enabled = False;
    // Forcing a level is refused while DPMS is off; it stays on afterwards,
    // as switching it off again would wake the monitors at once.
    if (DPMSInfo(display.Get(), &level, &enabled) && !enabled)
        DPMSEnable(display.Get());
    if (!DPMSForceLevel(display.Get(), DPMSModeOff))
        return SystemOutcome::Failure(EIO, std::string("the X server of display \"") + name +
                                               "\" refused to switch the monitors off");
    XSync(display.Get(), False);
    return SystemOutcome::Done();
}

// Idle time from the X11 screen-saver extension (XScreenSaverQueryInfo).

#include <mutex>

#include <X11/Xlib.h>
#include <X11/extensions/scrnsaver.h>

#include "desktop/platform/idle_time_platform.h"

namespace {

class XssIdleTimeSource final : public IdleTimeSource {
public:
    // A connection of our own: the checker threads must not share the GUI's.
    XssIdleTimeSource() : m_display(XOpenDisplay(nullptr))
    {
        int eventBase = 0;
        int errorBase = 0;
        m_hasExtension = m_display && XScreenSaverQueryExtension(m_display, &eventBase, &errorBase);
        if (m_hasExtension)
            m_info = XScreenSaverAllocInfo();
    }
    ~XssIdleTimeSource() override
    {
        if (m_info)
            XFree(m_info);
        if (m_display)
            XCloseDisplay(m_display);
    }

    bool IsAvailable() const override { return m_hasExtension && m_info; }

    long IdleSeconds() override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_hasExtension || !m_info)
            return 0;
        if (!XScreenSaverQueryInfo(m_display, DefaultRootWindow(m_display), m_info))
            return 0;
        return static_cast<long>(m_info->idle / 1000);
    }

private:
    std::mutex m_mutex;
    Display* m_display;
    XScreenSaverInfo* m_info = nullptr;
    bool m_hasExtension = false;
};

}  // namespace

std::unique_ptr<IdleTimeSource> CreatePlatformIdleTimeSource()
{
    return std::make_unique<XssIdleTimeSource>();
}

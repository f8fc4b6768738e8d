#include "gui/shell/global_hotkeys.h"

#include <cstdlib>
#include <cstring>

#include <gdk/gdk.h>
#include <gdk/gdkx.h>
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/keysym.h>

namespace {

Display* XDisplayOrNull()
{
    GdkDisplay* display = gdk_display_get_default();
    if (!display || !GDK_IS_X11_DISPLAY(display))
        return nullptr;
    return gdk_x11_display_get_xdisplay(display);
}

GdkFilterReturn KeyFilter(GdkXEvent* native, GdkEvent*, gpointer data)
{
    const XEvent* event = static_cast<const XEvent*>(native);
    // Only the press acts; the release of the same key is left alone.
    if (event->type != KeyPress)
        return GDK_FILTER_CONTINUE;
    auto* keys = static_cast<GlobalHotKeys*>(data);
    return keys->Dispatch(event->xkey.keycode, event->xkey.state) ? GDK_FILTER_REMOVE : GDK_FILTER_CONTINUE;
}

}  // namespace

bool GlobalHotKeys::Available()
{
    return XDisplayOrNull() != nullptr;
}

GlobalHotKeys::GlobalHotKeys(Callback callback) : m_callback(std::move(callback))
{
    Display* display = XDisplayOrNull();
    if (!display)
        return;
    // The lock keys' masks depend on the keyboard map: Num Lock is often
    // Mod2 but need not be, and Scroll Lock is often on no modifier at all.
    m_lockMask = LockMask | XkbKeysymToModifiers(display, XK_Num_Lock) | XkbKeysymToModifiers(display, XK_Scroll_Lock);
    gdk_window_add_filter(gdk_get_default_root_window(), KeyFilter, this);
    m_bFilterAdded = true;
}

GlobalHotKeys::~GlobalHotKeys()
{
    for (const auto& entry : m_grabs)
        Ungrab(entry.second);
    m_grabs.clear();
    if (m_bFilterAdded)
        gdk_window_remove_filter(gdk_get_default_root_window(), KeyFilter, this);
    if (Display* display = XDisplayOrNull())
        XFlush(display);
}

std::vector<unsigned int> GlobalHotKeys::LockCombinations() const
{
    // Every subset of the lock bits, so the key works whatever lock is on.
    std::vector<unsigned int> combinations;
    std::vector<unsigned int> bits;
    for (unsigned int bit = 1; bit != 0 && bit <= m_lockMask; bit <<= 1) {
        if (m_lockMask & bit)
            bits.push_back(bit);
    }
    for (unsigned int subset = 0; subset < (1u << bits.size()); ++subset) {
        unsigned int mask = 0;
        for (std::size_t i = 0; i < bits.size(); ++i) {
            if (subset & (1u << i))
                mask |= bits[i];
        }
        combinations.push_back(mask);
    }
    return combinations;
}

unsigned int GlobalHotKeys::XModifiers(int bits) const
{
    Display* display = XDisplayOrNull();
    unsigned int mask = 0;
    if (bits & kModControl)
        mask |= ControlMask;
    if (bits & kModShift)
        mask |= ShiftMask;
    if (bits & kModAlt) {
        const unsigned int alt = XkbKeysymToModifiers(display, XK_Alt_L);
        mask |= alt ? alt : Mod1Mask;
    }
    if (bits & kModWin) {
        const unsigned int super = XkbKeysymToModifiers(display, XK_Super_L);
        mask |= super ? super : Mod4Mask;
    }
    return mask;
}

GlobalHotKeys::Result GlobalHotKeys::Register(int id, const HotKeyBinding& binding)
{
    Display* display = XDisplayOrNull();
    if (!display)
        return Result::Unavailable;
    Unregister(id);
    if (!binding.valid)
        return Result::Invalid;
    Grab grab;
    grab.keycode = XKeysymToKeycode(display, static_cast<KeySym>(binding.keysym));
    grab.modifiers = XModifiers(binding.modifiers);
    grab.virtualKey = binding.virtualKey;
    if (grab.keycode == 0)
        return Result::Invalid;
    GdkDisplay* gdkDisplay = gdk_display_get_default();
    const Window root = DefaultRootWindow(display);
    // Each grab is checked on its own, so that the ones made before a
    // refused one are known and can be released.
    std::vector<unsigned int> made;
    for (unsigned int locks : LockCombinations()) {
        gdk_x11_display_error_trap_push(gdkDisplay);
        XGrabKey(display, static_cast<int>(grab.keycode), grab.modifiers | locks, root, False, GrabModeAsync,
                 GrabModeAsync);
        XSync(display, False);
        const int error = gdk_x11_display_error_trap_pop(gdkDisplay);
        if (error != 0) {
            for (unsigned int done : made) {
                gdk_x11_display_error_trap_push(gdkDisplay);
                XUngrabKey(display, static_cast<int>(grab.keycode), grab.modifiers | done, root);
                gdk_x11_display_error_trap_pop_ignored(gdkDisplay);
            }
            XFlush(display);
            return error == BadAccess ? Result::Taken : Result::Invalid;
        }
        made.push_back(locks);
    }
    m_grabs[id] = grab;
    return Result::Ok;
}

void GlobalHotKeys::Ungrab(const Grab& grab)
{
    Display* display = XDisplayOrNull();
    if (!display)
        return;
    GdkDisplay* gdkDisplay = gdk_display_get_default();
    for (unsigned int locks : LockCombinations()) {
        gdk_x11_display_error_trap_push(gdkDisplay);
        XUngrabKey(display, static_cast<int>(grab.keycode), grab.modifiers | locks, DefaultRootWindow(display));
        gdk_x11_display_error_trap_pop_ignored(gdkDisplay);
    }
}

void GlobalHotKeys::Unregister(int id)
{
    const auto it = m_grabs.find(id);
    if (it == m_grabs.end())
        return;
    Ungrab(it->second);
    m_grabs.erase(it);
    if (Display* display = XDisplayOrNull())
        XFlush(display);
}

bool GlobalHotKeys::Dispatch(unsigned int keycode, unsigned int state)
{
    const unsigned int relevant = state & ~m_lockMask & (ShiftMask | ControlMask | Mod1Mask | Mod2Mask | Mod3Mask |
                                                         Mod4Mask | Mod5Mask);
    for (const auto& [id, grab] : m_grabs) {
        if (grab.keycode == keycode && grab.modifiers == relevant) {
            // Copied: the callback may change the registrations.
            const int virtualKey = grab.virtualKey;
            const int grabId = id;
            m_callback(grabId, virtualKey);
            return true;
        }
    }
    return false;
}

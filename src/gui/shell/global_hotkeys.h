#pragma once
// System-wide hot keys. On X11: a passive grab of the key on the root window
// through the toolkit's own X connection, once for every combination of the
// lock modifiers (Caps, Num and Scroll Lock, whose masks come from XKB), and
// a GDK event filter that turns the key presses into callbacks on the main
// thread. Where X11 is not the session's display system, Register() reports
// that the keys are not available here.

#include <functional>
#include <map>
#include <vector>

#include "desktop/hotkey_plan.h"

class GlobalHotKeys {
public:
    enum class Result { Ok, Taken, Invalid, Unavailable };
    // Main thread; `id` is the registration's id.
    using Callback = std::function<void(int id, int virtualKey)>;

    explicit GlobalHotKeys(Callback callback);
    // Releases every grab.
    ~GlobalHotKeys();
    GlobalHotKeys(const GlobalHotKeys&) = delete;
    GlobalHotKeys& operator=(const GlobalHotKeys&) = delete;

    // Grabs `binding` as `id`. Taken: another program holds the key (the
    // grabs made for it are released again).
    Result Register(int id, const HotKeyBinding& binding);
    void Unregister(int id);
    // True when the session has an X11 display the grabs can work on.
    static bool Available();

    // Called by the event filter: true when the key press was one of ours.
    bool Dispatch(unsigned int keycode, unsigned int state);

private:
    struct Grab {
        unsigned int keycode = 0;
        unsigned int modifiers = 0;  // X modifier mask without the locks
        int virtualKey = 0;
    };
    std::vector<unsigned int> LockCombinations() const;
    unsigned int XModifiers(int modifierBits) const;
    void Ungrab(const Grab& grab);

    Callback m_callback;
    std::map<int, Grab> m_grabs;
    unsigned int m_lockMask = 0;
    bool m_bFilterAdded = false;
};

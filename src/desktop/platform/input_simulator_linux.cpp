// XTest: the server takes our events as if they came from the devices, so
// they reach whichever window has the focus (wxUIActionSimulator would move
// the focus to our own window first, and only works on the main thread).

#include "desktop/platform/input_simulator.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <thread>
#include <vector>

#include <X11/XKBlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include "core/translate.h"
#include "desktop/platform/x11_connection_linux.h"

namespace {

KeySym KeysymOf(InputKey key)
{
    const int k = static_cast<int>(key);
    if (key >= InputKey::F1 && key <= InputKey::F12)
        return XK_F1 + (k - static_cast<int>(InputKey::F1));
    if (key >= InputKey::A && key <= InputKey::Z)
        return XK_a + (k - static_cast<int>(InputKey::A));
    if (key >= InputKey::Digit0 && key <= InputKey::Digit9)
        return XK_0 + (k - static_cast<int>(InputKey::Digit0));
    if (key >= InputKey::Numpad0 && key <= InputKey::Numpad9)
        return XK_KP_0 + (k - static_cast<int>(InputKey::Numpad0));
    switch (key) {
    case InputKey::Back: return XK_BackSpace;
    case InputKey::Tab: return XK_Tab;
    case InputKey::Return: return XK_Return;
    case InputKey::Escape: return XK_Escape;
    case InputKey::Space: return XK_space;
    case InputKey::Delete: return XK_Delete;
    case InputKey::Insert: return XK_Insert;
    case InputKey::Left: return XK_Left;
    case InputKey::Right: return XK_Right;
    case InputKey::Up: return XK_Up;
    case InputKey::Down: return XK_Down;
    case InputKey::Home: return XK_Home;
    case InputKey::End: return XK_End;
    case InputKey::PageUp: return XK_Page_Up;
    case InputKey::PageDown: return XK_Page_Down;
    case InputKey::Print: return XK_Print;
    case InputKey::Pause: return XK_Pause;
    case InputKey::NumLock: return XK_Num_Lock;
    case InputKey::CapsLock: return XK_Caps_Lock;
    case InputKey::ScrollLock: return XK_Scroll_Lock;
    case InputKey::Menu: return XK_Menu;
    case InputKey::Ctrl: return XK_Control_L;
    case InputKey::Shift: return XK_Shift_L;
    case InputKey::Alt: return XK_Alt_L;
    case InputKey::Win: return XK_Super_L;
    case InputKey::Multiply: return XK_KP_Multiply;
    case InputKey::Add: return XK_KP_Add;
    case InputKey::Subtract: return XK_KP_Subtract;
    case InputKey::Decimal: return XK_KP_Decimal;
    case InputKey::Divide: return XK_KP_Divide;
    default: return NoSymbol;
    }
}

// The keysym that stands for a character: Latin-1 ones are their own code,
// every other one is 0x01000000 + code point.
KeySym KeysymOfChar(wxUniChar::value_type c)
{
    if (c == '\n' || c == '\r')
        return XK_Return;
    if (c == '\t')
        return XK_Tab;
    if ((c >= 0x20 && c <= 0x7e) || (c >= 0xa0 && c <= 0xff))
        return static_cast<KeySym>(c);
    if (c < 0x20 || c == 0x7f || c > 0x10ffff)
        return NoSymbol;
    return static_cast<KeySym>(0x01000000UL | c);
}

class XTestSimulator final : public InputSimulator {
public:
    explicit XTestSimulator(wxString& problem)
    {
        if (!m_x) {
            problem = m_x.Problem();
            return;
        }
        int eventBase = 0;
        int errorBase = 0;
        int major = 0;
        int minor = 0;
        if (!XTestQueryExtension(m_x.Get(), &eventBase, &errorBase, &major, &minor)) {
            problem = TranslateFromAnyThread(
                "The X server has no XTEST extension, which simulated keys and clicks need.");
            return;
        }
        XDisplayKeycodes(m_x.Get(), &m_minCode, &m_maxCode);
        KeySym* map = XGetKeyboardMapping(m_x.Get(), static_cast<KeyCode>(m_minCode), m_maxCode - m_minCode + 1,
                                          &m_perCode);
        if (map) {
            m_map.assign(map, map + static_cast<std::size_t>(m_maxCode - m_minCode + 1) * m_perCode);
            XFree(map);
        }
        m_ready = m_perCode >= 2;
        if (!m_ready)
            problem = TranslateFromAnyThread("The X server did not tell its keyboard map.");
    }

    bool Ready() const { return m_ready; }

    bool KeyDown(InputKey key) override { return SendKey(XKeysymToKeycode(m_x.Get(), KeysymOf(key)), true); }
    bool KeyUp(InputKey key) override { return SendKey(XKeysymToKeycode(m_x.Get(), KeysymOf(key)), false); }

    bool TypeText(const wxString& text) override
    {
        bool all = true;
        for (wxString::const_iterator it = text.begin(); it != text.end(); ++it) {
            const wxUniChar::value_type c = (*it).GetValue();
            // A "\r\n" line end is one Return.
            if (c == '\r' && it + 1 != text.end() && (*(it + 1)).GetValue() == '\n')
                continue;
            const KeySym sym = KeysymOfChar(c);
            if (sym == NoSymbol || !TypeKeysym(sym))
                all = false;
        }
        ReturnLentKeys();
        return all;
    }

    void MoveTo(int x, int y) override
    {
        XTestFakeMotionEvent(m_x.Get(), -1, x, y, CurrentTime);
        m_x.SyncAndTakeError();
    }
    void ButtonDown(MouseButton button) override { SendButton(button, true); }
    void ButtonUp(MouseButton button) override { SendButton(button, false); }

    void Pause(int milliseconds) override
    {
        XSync(m_x.Get(), False);
        if (milliseconds > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }

private:
    bool SendKey(KeyCode code, bool down)
    {
        if (code == 0)
            return false;
        XTestFakeKeyEvent(m_x.Get(), code, down ? True : False, CurrentTime);
        return m_x.SyncAndTakeError() == 0;
    }

    void SendButton(MouseButton button, bool down)
    {
        XTestFakeButtonEvent(m_x.Get(), button == MouseButton::Left ? 1 : 3, down ? True : False, CurrentTime);
        m_x.SyncAndTakeError();
    }

    KeySym MapAt(int code, int level) const
    {
        return m_map[static_cast<std::size_t>(code - m_minCode) * m_perCode + level];
    }

    // The key and whether Shift is needed, looking at the first two levels
    // only: other levels need modifiers (AltGr) that vary by layout.
    bool FindKey(KeySym sym, KeyCode& code, bool& shift) const
    {
        KeySym lower = NoSymbol;
        KeySym upper = NoSymbol;
        XConvertCase(sym, &lower, &upper);
        for (int level = 0; level < 2; ++level) {
            for (int c = m_minCode; c <= m_maxCode; ++c) {
                const KeySym here = MapAt(c, level);
                // A key listing only the lower case letter gives the upper
                // case one with Shift.
                const bool lowerOnly = level == 1 && sym == upper && lower != upper && MapAt(c, 0) == lower &&
                                       MapAt(c, 1) == NoSymbol;
                if (here == sym || lowerOnly) {
                    code = static_cast<KeyCode>(c);
                    shift = level == 1;
                    return true;
                }
            }
        }
        return false;
    }

    int SpareKeycode() const
    {
        for (int c = m_maxCode; c >= m_minCode; --c) {
            bool empty = true;
            for (int level = 0; level < m_perCode && empty; ++level)
                empty = MapAt(c, level) == NoSymbol;
            if (empty)
                return c;
        }
        return 0;
    }

    bool TypeKeysym(KeySym sym)
    {
        KeyCode code = 0;
        bool shift = false;
        if (FindKey(sym, code, shift)) {
            const KeyCode shiftCode = XKeysymToKeycode(m_x.Get(), XK_Shift_L);
            if (shift && shiftCode == 0)
                return false;
            if (shift)
                SendKey(shiftCode, true);
            const bool ok = SendKey(code, true) && SendKey(code, false);
            if (shift)
                SendKey(shiftCode, false);
            return ok;
        }
        // No key gives it: lend it to a key that gives nothing. A program
        // reads the map when it handles the MappingNotify, so the key keeps
        // the character until the text is typed and the programs had time to
        // look; then TypeText gives the keys back their empty maps.
        auto lent = m_lent.find(sym);
        if (lent == m_lent.end()) {
            int spare = SpareKeycode();
            if (spare == 0 && !m_lent.empty()) {
                ReturnLentKeys();
                spare = SpareKeycode();
            }
            if (spare == 0)
                return false;
            std::vector<KeySym> map(static_cast<std::size_t>(m_perCode), NoSymbol);
            map[0] = sym;
            map[1] = sym;
            XChangeKeyboardMapping(m_x.Get(), spare, m_perCode, map.data(), 1);
            if (m_x.SyncAndTakeError() != 0)
                return false;
            SetMap(spare, map);
            lent = m_lent.emplace(sym, static_cast<KeyCode>(spare)).first;
            // Programs learn the new map when they handle the change; a
            // key pressed before that arrives with its old, empty meaning.
            Pause(kLendSettleMs);
        }
        return SendKey(lent->second, true) && SendKey(lent->second, false);
    }

    void SetMap(int code, const std::vector<KeySym>& map)
    {
        std::copy(map.begin(), map.end(), m_map.begin() + static_cast<std::ptrdiff_t>(code - m_minCode) * m_perCode);
    }

    void ReturnLentKeys()
    {
        if (m_lent.empty())
            return;
        Pause(kLentKeyHoldMs);
        const std::vector<KeySym> empty(static_cast<std::size_t>(m_perCode), NoSymbol);
        for (const auto& [sym, code] : m_lent) {
            XChangeKeyboardMapping(m_x.Get(), code, m_perCode, const_cast<KeySym*>(empty.data()), 1);
            SetMap(code, empty);
        }
        m_lent.clear();
        m_x.SyncAndTakeError();
    }

    // How long lent keys keep their characters after the last use: a busy
    // program may handle its events this much later.
    static constexpr int kLentKeyHoldMs = 300;
    static constexpr int kLendSettleMs = 50;
    std::map<KeySym, KeyCode> m_lent;
    X11Connection m_x;
    int m_minCode = 0;
    int m_maxCode = 0;
    int m_perCode = 0;
    std::vector<KeySym> m_map;
    bool m_ready = false;
};

}  // namespace

std::unique_ptr<InputSimulator> InputSimulator::Open(wxString& problem)
{
    auto simulator = std::make_unique<XTestSimulator>(problem);
    if (!simulator->Ready())
        return nullptr;
    return simulator;
}

#include "desktop/hotkey_plan.h"

#include <utility>

#include <X11/keysym.h>

#include "core/translate.h"

// After the other headers: Xlib defines macros (None, Status) that clash.
#include <X11/Xlib.h>

namespace {

bool ToInt(const wxString& text, long& value)
{
    return !text.empty() && text.ToLong(&value);
}

}  // namespace

unsigned long KeysymForVirtualKey(int vk)
{
    if (vk >= '0' && vk <= '9')
        return XK_0 + static_cast<unsigned long>(vk - '0');
    if (vk >= 'A' && vk <= 'Z')
        return XK_a + static_cast<unsigned long>(vk - 'A');
    if (vk >= 0x60 && vk <= 0x69)  // number pad 0-9
        return XK_KP_0 + static_cast<unsigned long>(vk - 0x60);
    if (vk >= 0x70 && vk <= 0x87)  // F1-F24
        return XK_F1 + static_cast<unsigned long>(vk - 0x70);
    switch (vk) {
    case 0x08: return XK_BackSpace;
    case 0x09: return XK_Tab;
    case 0x0D: return XK_Return;
    case 0x1B: return XK_Escape;
    case 0x20: return XK_space;
    case 0x21: return XK_Prior;
    case 0x22: return XK_Next;
    case 0x23: return XK_End;
    case 0x24: return XK_Home;
    case 0x25: return XK_Left;
    case 0x26: return XK_Up;
    case 0x27: return XK_Right;
    case 0x28: return XK_Down;
    case 0x2D: return XK_Insert;
    case 0x2E: return XK_Delete;
    default: return 0;
    }
}

HotKeyBinding BindingFromValues(const wxString& modifierCode, const wxString& keyCode)
{
    HotKeyBinding binding;
    long modifiers = 0;
    long key = 0;
    if (!ToInt(modifierCode, modifiers) || !ToInt(keyCode, key) || modifiers < 0 ||
        modifiers > (kModAlt | kModControl | kModShift | kModWin))
        return binding;
    binding.keysym = KeysymForVirtualKey(static_cast<int>(key));
    binding.modifiers = static_cast<int>(modifiers) | kModControl;
    binding.virtualKey = static_cast<int>(key);
    binding.valid = binding.keysym != 0;
    return binding;
}

wxString HotKeyFailureText(HotKeyId id, const wxString& modifierCode)
{
    const HotKeySpec& spec = HotKeySpecs()[static_cast<std::size_t>(id)];
    const wxString combination = modifierCode == "1" ? wxString::Format(_("Ctrl + Alt + %s"), wxString(spec.defaultKey))
                                                     : wxString::Format(_("Ctrl + Shift + %s"), wxString(spec.defaultKey));
    return TranslateFromAnyThread(spec.failure) + "\n" + _("HOTKEY restore default setting:") + " " + combination + "\n" +
           _("You can reset HOTKEY setting in Setting dialog.");
}

int CustomKeyIndex(int pressedVirtualKey, const std::array<wxString, 3>& storedKeyCodes)
{
    for (int i = 0; i < 3; ++i) {
        long stored = 0;
        if (ToInt(storedKeyCodes[static_cast<std::size_t>(i)], stored) && stored == pressedVirtualKey)
            return i;
    }
    return -1;
}

std::string PortalTrigger(const HotKeyBinding& binding)
{
    if (!binding.valid)
        return std::string();
    std::string trigger;
    for (const auto& [bit, name] : {std::pair<int, const char*>{kModControl, "CTRL+"},
                                    {kModAlt, "ALT+"}, {kModShift, "SHIFT+"}, {kModWin, "LOGO+"}})
        if (binding.modifiers & bit)
            trigger += name;
    const char* key = XKeysymToString(binding.keysym);
    return key ? trigger + key : std::string();
}

std::string PortalRequestPath(const std::string& uniqueName, const std::string& token)
{
    std::string sender = uniqueName.substr(uniqueName.compare(0, 1, ":") == 0 ? 1 : 0);
    for (char& c : sender)
        if (c == '.')
            c = '_';
    return "/org/freedesktop/portal/desktop/request/" + sender + "/" + token;
}

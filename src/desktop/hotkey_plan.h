#pragma once
// The five global hot keys as the preferences describe them: which modifier
// bits and key each one grabs, and the texts shown when one cannot be
// registered. No X11 here.

#include <array>
#include <cstdint>
#include <string>

#include <wx/string.h>

#include "core/prefs/hotkey_specs.h"

struct HotKeyBinding {
    bool valid = false;
    int modifiers = 0;       // kMod* bits, always with kModControl
    int virtualKey = 0;      // the stored key code
    unsigned long keysym = 0;  // the X keysym of that key
};

// The stored modifier code with the Ctrl bit added, and the stored key code.
// Invalid when a value is not a number or the key has no X equivalent.
HotKeyBinding BindingFromValues(const wxString& modifierCode, const wxString& keyCode);

// The X keysym of a Windows virtual key code (digits, letters, F1-F24, the
// number pad, space and a few others); 0 when there is none.
unsigned long KeysymForVirtualKey(int virtualKey);

// The key's failure message, the default that can be restored ("Ctrl +
// Shift + 9", or "Ctrl + Alt + 9" when the stored modifier code is 1) and
// the hint to the settings dialog.
wxString HotKeyFailureText(HotKeyId id, const wxString& modifierCode);

// Which custom key (0-2) a pressed virtual key code selects, comparing the
// stored key codes in order; -1 when none.
int CustomKeyIndex(int pressedVirtualKey, const std::array<wxString, 3>& storedKeyCodes);

// The binding as a trigger in the desktop portal's shortcut format
// ("CTRL+SHIFT+9", "CTRL+ALT+LOGO+F5": modifiers, then the key's X keysym
// name); empty when the binding is not valid.
std::string PortalTrigger(const HotKeyBinding& binding);

// Where the desktop portal answers a request made with `token`, from the
// caller's unique bus name (":1.42" gives ".../request/1_42/TOKEN").
std::string PortalRequestPath(const std::string& uniqueName, const std::string& token);

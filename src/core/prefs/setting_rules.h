#pragma once
// What the settings dialog does with its values, without any window: read
// them from the preferences, refuse a form that cannot be stored, turn it into
// preference values, and say which notices follow a change. The dialog only
// moves values between its controls and these functions.

#include <array>
#include <utility>
#include <vector>

#include <wx/string.h>

#include "core/prefs/hotkey_specs.h"

class SettingsLookup;

// The characters a hot key can use, in the order the key choice lists them;
// the stored key code is the character's code.
extern const char kHotKeyCharacters[];
// Modifier codes besides the Ctrl that registration always adds.
constexpr int kHotKeyShift = kModShift;
constexpr int kHotKeyAlt = kModAlt;

struct HotKeySetting {
    int modifiers = kHotKeyShift;  // kHotKeyShift or kHotKeyAlt
    int keyCode = '0';             // one of kHotKeyCharacters
};

struct SettingForm {
    bool minimizeOnOpenJob = false;
    bool execMissFiredTrigger = false;
    bool hideNotifyWnd = false;
    bool autostart = false;
    bool preserveMainFrmSize = true;
    bool hideMainFrmClickCloseBtn = false;
    bool usePassword = false;
    bool minimizeOnAppStart = false;
    bool hideTrayIcon = false;
    // Both empty while a password is stored: keep that password.
    wxString password;
    wxString confirmPassword;
    std::array<HotKeySetting, kHotKeyCount> hotKeys;
    std::array<wxString, kCustomHotKeyCount> associatedJids;
};

// The preference keys of hot key `index`: its modifier code and key code.
std::pair<const char*, const char*> HotKeyPreferenceKeys(int index);

// The form as the preferences hold it. A modifier code without Shift but
// with Alt shows as Alt, anything else as Shift; a key code outside the 36
// characters shows as that key's default.
SettingForm FormFromSettings(const SettingsLookup& prefs, bool autostart);

// The message that refuses the form, or an empty text when it can be stored.
// `storedPassword` is the current `password` preference.
wxString ValidateSettingForm(const SettingForm& form, const wxString& storedPassword);

// The preference values of a valid form, key and value, in table order. A new
// password is stored hashed; a kept one stays (an old plain value is hashed);
// without the password box the password is forgotten.
std::vector<std::pair<wxString, wxString>> SettingValues(const SettingForm& form, const wxString& storedPassword);

// The notices shown after the form was stored over `before`, in order.
std::vector<wxString> SettingChangeNotices(const SettingsLookup& before, const SettingForm& form);

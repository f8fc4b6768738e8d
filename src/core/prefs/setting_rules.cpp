#include "core/prefs/setting_rules.h"

#include <cstring>

#include <wx/translation.h>

#include "core/prefs/password_hash.h"
#include "core/settings_lookup.h"

const char kHotKeyCharacters[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

namespace {

bool IsHotKeyCharacter(long code)
{
    return code > 0 && code < 128 && std::strchr(kHotKeyCharacters, static_cast<int>(code)) != nullptr;
}

long ToLong(const wxString& text, long fallback)
{
    long value = 0;
    return text.ToLong(&value) ? value : fallback;
}

wxString Flag(bool on)
{
    return on ? "1" : "0";
}

}  // namespace

std::pair<const char*, const char*> HotKeyPreferenceKeys(int index)
{
    const HotKeySpec& spec = HotKeySpecs().at(static_cast<std::size_t>(index));
    return {spec.modifierKey, spec.keyKey};
}

SettingForm FormFromSettings(const SettingsLookup& prefs, bool autostart)
{
    auto on = [&](const char* key) { return prefs.GetSetting(key) == "1"; };
    SettingForm form;
    form.minimizeOnOpenJob = on("minimizeOnOpenJob");
    form.execMissFiredTrigger = on("execMissFiredTrigger");
    form.hideNotifyWnd = on("hideNotifyWnd");
    form.autostart = autostart;
    form.preserveMainFrmSize = on("preserveMainFrmSize");
    form.hideMainFrmClickCloseBtn = on("hideMainFrmClickCloseBtn");
    form.usePassword = on("usePassword");
    form.minimizeOnAppStart = on("minimizeOnAppStart");
    form.hideTrayIcon = on("hideTrayIcon");
    for (int i = 0; i < kHotKeyCount; ++i) {
        const HotKeySpec& spec = HotKeySpecs()[static_cast<std::size_t>(i)];
        const long mods = ToLong(prefs.GetSetting(spec.modifierKey), kHotKeyShift);
        form.hotKeys[i].modifiers = (mods & kHotKeyAlt) && !(mods & kHotKeyShift) ? kHotKeyAlt : kHotKeyShift;
        const long key = ToLong(prefs.GetSetting(spec.keyKey), 0);
        form.hotKeys[i].keyCode = IsHotKeyCharacter(key) ? static_cast<int>(key) : spec.defaultKey;
    }
    for (int i = 0; i < kCustomHotKeyCount; ++i)
        form.associatedJids[i] = prefs.GetSetting(HotKeySpecs()[kHotKeyCount - kCustomHotKeyCount + i].jidKey);
    return form;
}

wxString ValidateSettingForm(const SettingForm& form, const wxString& storedPassword)
{
    for (int i = 0; i < kHotKeyCount; ++i)
        for (int j = i + 1; j < kHotKeyCount; ++j)
            if (form.hotKeys[i].modifiers == form.hotKeys[j].modifiers &&
                form.hotKeys[i].keyCode == form.hotKeys[j].keyCode)
                return _("HOTKEY is same, please reset.");
    if (form.usePassword) {
        const bool keep = form.password.empty() && form.confirmPassword.empty() && !storedPassword.empty();
        if (!keep && form.password.empty())
            return _("Please input password.");
        if (form.password != form.confirmPassword)
            return _("Two passwords is not same.");
    }
    for (int i = 0; i < kCustomHotKeyCount; ++i) {
        unsigned long jid = 0;
        const wxString text = form.associatedJids[i].Strip(wxString::both);
        if (text.empty() || !text.IsNumber() || !text.ToULong(&jid) || jid > 0x7fffffffUL)
            return wxString::Format(_("Customize Hotkey %d: the Associated Job ID must be a job number (0 or more)."),
                                    i + 1);
    }
    return wxString();
}

std::vector<std::pair<wxString, wxString>> SettingValues(const SettingForm& form, const wxString& storedPassword)
{
    wxString password;
    if (form.usePassword) {
        if (!form.password.empty())
            password = HashPassword(form.password);
        else
            password = IsPasswordHash(storedPassword) ? storedPassword : HashPassword(storedPassword);
    }
    std::vector<std::pair<wxString, wxString>> values = {
        {"minimizeOnOpenJob", Flag(form.minimizeOnOpenJob)},
        {"execMissFiredTrigger", Flag(form.execMissFiredTrigger)},
        {"hideNotifyWnd", Flag(form.hideNotifyWnd)},
        {"preserveMainFrmSize", Flag(form.preserveMainFrmSize)},
        {"hideMainFrmClickCloseBtn", Flag(form.hideMainFrmClickCloseBtn)},
        {"usePassword", Flag(form.usePassword)},
        {"password", password},
        {"minimizeOnAppStart", Flag(form.minimizeOnAppStart)},
        {"hideTrayIcon", Flag(form.hideTrayIcon)},
    };
    for (int i = 0; i < kHotKeyCount; ++i) {
        const HotKeySpec& spec = HotKeySpecs()[static_cast<std::size_t>(i)];
        values.emplace_back(spec.modifierKey, wxString::Format("%d", form.hotKeys[i].modifiers));
        values.emplace_back(spec.keyKey, wxString::Format("%d", form.hotKeys[i].keyCode));
        if (spec.jidKey)
            values.emplace_back(spec.jidKey, form.associatedJids[i - (kHotKeyCount - kCustomHotKeyCount)].Strip(wxString::both));
    }
    return values;
}

std::vector<wxString> SettingChangeNotices(const SettingsLookup& before, const SettingForm& form)
{
    std::vector<wxString> notices;
    bool hotKeyChanged = false;
    for (int i = 0; i < kHotKeyCount; ++i) {
        const HotKeySpec& spec = HotKeySpecs()[static_cast<std::size_t>(i)];
        hotKeyChanged |= ToLong(before.GetSetting(spec.modifierKey), -1) != form.hotKeys[i].modifiers ||
                         ToLong(before.GetSetting(spec.keyKey), -1) != form.hotKeys[i].keyCode;
    }
    // Three texts translated apart; the line break keeps the last sentence
    // from running into the previous one.
    if (hotKeyChanged)
        notices.push_back(_("HOTKEY setting changed,\n") + _("please remember the HOTKEY setting.") + "\n" +
                          _("You must restart application for this change to take effect."));
    if (form.hideTrayIcon && before.GetSetting("hideTrayIcon") != "1")
        notices.push_back(_("Tray's ICON will be hiden, you can use HOTKEY restore window."));
    return notices;
}

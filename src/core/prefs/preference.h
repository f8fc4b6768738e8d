#pragma once
// The program's settings: a map from setting name to text value, filled with
// the built-in defaults, overlaid with what the user's configuration holds,
// and written back as a whole. Yes/no values are "1" and "0".
//
// Stored form: entry name = VtxEncode(key); stored text = VtxEncode(a
// 10-digit, zero-padded count of seconds since 1970 at the time of saving,
// followed by the value). Saving the same value twice stores different text.
// The language choice ("ui_language") is kept by the language chooser
// itself, not here.

#include <memory>
#include <shared_mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include <wx/string.h>

#include "core/clock.h"
#include "core/settings_lookup.h"

class wxConfigBase;

class Preference final : public SettingsLookup {
public:
    // Works on `config` (not owned); call Load() to read it. `clock` stamps
    // the stored values.
    explicit Preference(wxConfigBase* config, const Clock& clock = TheSystemClock());
    ~Preference() override;

    // The preferences over the user's configuration file
    // ($XDG_CONFIG_HOME/Cadrelle/Cadrelle.conf), loaded. The session owns
    // them; two objects over one file would undo each other's saves.
    static std::unique_ptr<Preference> OpenUserPreferences();
    // Where OpenUserPreferences() keeps its file.
    static wxString UserConfigPath();

    // The value of `key`; empty for an unknown key. Safe from any thread.
    wxString GetValue(const wxString& key) const;
    // Main thread only.
    void SetValue(const wxString& key, const wxString& value);
    // SettingsLookup, for the core (checker threads).
    wxString GetSetting(const wxString& name) const override { return GetValue(name); }

    // Reads every key from the configuration; an absent, empty or unreadable
    // entry leaves the current value. Then: preserveMainFrmSize = "0" puts
    // the window geometry back to its defaults, usePassword = "0" forgets the
    // password.
    void Load();
    // Writes every key, then flushes the configuration.
    void SaveSettingParam();
    // The configuration the values live in, for the few entries kept outside
    // this table ("ui_language"): writing them through another object on the
    // same file would be undone by the next save.
    wxConfigBase* Config() const { return m_pConfig; }

    // The key table in its order, with the built-in defaults.
    static const std::vector<std::pair<const char*, const char*>>& Defaults();
    // The fixed width of the time prefix of a stored value.
    static constexpr std::size_t kPrefixWidth = 10;

private:
    wxConfigBase* m_pConfig;
    const Clock& m_clock;
    std::unique_ptr<wxConfigBase> m_pOwnedConfig;
    mutable std::shared_mutex m_mutex;
    std::unordered_map<wxString, wxString> m_values;
};

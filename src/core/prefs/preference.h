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

#include <cstdint>
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

    // A file larger than this is not read at all.
    static constexpr std::uintmax_t kMaxFileSize = 1024 * 1024;
    // The preferences over the file at `path`, loaded. A file that cannot be
    // read as written (larger than kMaxFileSize, not UTF-8 text, an entry of
    // ours that does not decode) is first copied to
    // <path>.bad-<YYYYmmdd-HHMMSS> (0600); see Problem(). A file unreadable
    // as a whole is then replaced by one that holds only the password lock:
    // whether a password was set cannot be known, so it stays required.
    // When no copy could be kept, nothing is ever written to the file.
    static std::unique_ptr<Preference> OpenFile(const wxString& path, const Clock& clock = TheSystemClock());
    // Why the stored preferences were not read as written; empty when they were.
    const wxString& Problem() const { return m_problem; }
    // Where the original was kept; empty when no copy could be made.
    const wxString& KeptCopy() const { return m_keptCopy; }
    // The user's message for Problem() (empty when there is none).
    wxString ProblemMessage() const;
    // A password is required (or may be: it could not be read) but the
    // stored one cannot be checked: no password can unlock.
    bool IsPasswordUnreadable() const;
    // Says why, and the way to reset the password (docs/PREFERENCES.md).
    wxString PasswordUnreadableMessage() const;

    // A window's place and size as stored, fitted to `screen` (the display's
    // work area): no larger than it, at least kMinWindowW x kMinWindowH, and
    // wholly on it. `note` says what was changed (empty when nothing).
    struct Geometry {
        long x, y, width, height;
        bool operator==(const Geometry& o) const
        {
            return x == o.x && y == o.y && width == o.width && height == o.height;
        }
    };
    static constexpr long kMinWindowW = 200, kMinWindowH = 100;
    static Geometry FitToScreen(const Geometry& stored, const Geometry& screen, wxString& note);

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
    wxString m_path;        // the file (OpenFile), for messages
    wxString m_problem;
    wxString m_keptCopy;
    bool m_bReadOnly = false;  // nothing may be written: no copy was kept
    std::vector<wxString> m_unreadableKeys;  // stored but not decodable (Load)
    wxConfigBase* m_pConfig;
    const Clock& m_clock;
    std::unique_ptr<wxConfigBase> m_pOwnedConfig;
    mutable std::shared_mutex m_mutex;
    std::unordered_map<wxString, wxString> m_values;
};

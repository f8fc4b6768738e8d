// The settings form, the password hash and the autostart entry, without a
// display: tables of forms, real hashes, real files and desktop-file-validate.

#include <cstdlib>
#include <functional>
#include <map>

#include <gtest/gtest.h>
#include <wx/ffile.h>
#include <wx/filename.h>
#include <wx/init.h>
#include <wx/log.h>

#include "core/prefs/password_hash.h"
#include "core/prefs/preference.h"
#include "core/prefs/setting_rules.h"
#include "core/settings_lookup.h"
#include "desktop/platform/autostart.h"

namespace {

const wxInitializer kWxBase;  // log records reach the active target at once

struct Values final : SettingsLookup {
    std::map<wxString, wxString> map;
    Values()
    {
        for (const auto& entry : Preference::Defaults())
            map[entry.first] = entry.second;
    }
    wxString GetSetting(const wxString& name) const override { return map.count(name) ? map.at(name) : ""; }
};

struct FormRow {
    const char* what;
    std::function<void(SettingForm&)> change;
    wxString stored;    // the stored password
    wxString refusal;   // expected message, empty = accepted
    int notices;        // notices after storing over the defaults
};

TEST(SettingForm, RefusalsAndNotices)
{
    const FormRow rows[] = {
        {"defaults", [](SettingForm&) {}, "", "", 0},
        {"same key, other modifier", [](SettingForm& f) { f.hotKeys[4] = {kHotKeyAlt, '0'}; }, "", "", 1},
        {"two keys alike", [](SettingForm& f) { f.hotKeys[4] = {kHotKeyShift, '0'}; }, "",
         "HOTKEY is same, please reset.", 1},
        {"first and second alike", [](SettingForm& f) { f.hotKeys[1] = f.hotKeys[0]; }, "",
         "HOTKEY is same, please reset.", 1},
        {"no password", [](SettingForm& f) { f.usePassword = true; }, "", "Please input password.", 0},
        {"only confirmation", [](SettingForm& f) { f.usePassword = true, f.confirmPassword = "a"; }, "x",
         "Please input password.", 0},
        {"passwords differ", [](SettingForm& f) { f.usePassword = true, f.password = "a", f.confirmPassword = "b"; },
         "", "Two passwords is not same.", 0},
        {"keep stored password", [](SettingForm& f) { f.usePassword = true; }, "x", "", 0},
        {"hot key before password", [](SettingForm& f) { f.usePassword = true, f.hotKeys[2] = f.hotKeys[3]; }, "",
         "HOTKEY is same, please reset.", 1},
        {"job id not a number", [](SettingForm& f) { f.associatedJids[1] = "x1"; }, "",
         "Customize Hotkey 2: the Associated Job ID must be a job number (0 or more).", 0},
        {"job id empty", [](SettingForm& f) { f.associatedJids[2] = " "; }, "",
         "Customize Hotkey 3: the Associated Job ID must be a job number (0 or more).", 0},
        {"tray hidden", [](SettingForm& f) { f.hideTrayIcon = true; }, "", "", 1},
        {"key and tray", [](SettingForm& f) { f.hideTrayIcon = true, f.hotKeys[0].keyCode = 'Z'; }, "", "", 2},
    };
    const Values defaults;
    for (const FormRow& row : rows) {
        SCOPED_TRACE(row.what);
        SettingForm form = FormFromSettings(defaults, false);
        row.change(form);
        EXPECT_EQ(ValidateSettingForm(form, row.stored), row.refusal);
        EXPECT_EQ(SettingChangeNotices(defaults, form).size(), static_cast<size_t>(row.notices));
    }
    SettingForm form = FormFromSettings(defaults, false);
    form.hotKeys[0].keyCode = 'Q';
    form.hideTrayIcon = true;
    const auto notices = SettingChangeNotices(defaults, form);
    EXPECT_EQ(notices.at(0), "HOTKEY setting changed,\nplease remember the HOTKEY setting.\n"
                             "You must restart application for this change to take effect.");
    EXPECT_EQ(notices.at(1), "Tray's ICON will be hiden, you can use HOTKEY restore window.");
}

TEST(SettingForm, ReadAndStoredValues)
{
    Values prefs;
    prefs.map["hotkeyPauseMode2"] = "1";   // Alt
    prefs.map["hotkeyCust12"] = "5";       // Shift wins
    prefs.map["hotkeyCust23"] = "200";     // not one of the keys: its default
    prefs.map["hideNotifyWnd"] = "1";
    const SettingForm form = FormFromSettings(prefs, true);
    EXPECT_TRUE(form.autostart && form.hideNotifyWnd && form.preserveMainFrmSize && !form.usePassword);
    EXPECT_EQ(form.hotKeys[1].modifiers, kHotKeyAlt);
    EXPECT_EQ(form.hotKeys[2].modifiers, kHotKeyShift);
    EXPECT_EQ(form.hotKeys[3].keyCode, '7');

    std::map<wxString, wxString> stored;
    for (const auto& value : SettingValues(form, "old"))
        stored[value.first] = value.second;
    EXPECT_EQ(stored["hotkeyPauseMode2"], "1");
    EXPECT_EQ(stored["hotkeyCust23"], "55");
    EXPECT_EQ(stored["hotkeyAssociatedJID3"], "2");
    EXPECT_EQ(stored["hideNotifyWnd"], "1");
    EXPECT_EQ(stored["password"], "") << "no password box, no password";
    EXPECT_EQ(stored.size(), 22u) << "every key the dialog edits";

    SettingForm locked = form;
    locked.usePassword = true;
    const auto kept = SettingValues(locked, "old");  // an old plain value is kept, hashed
    const wxString keptHash = std::find_if(kept.begin(), kept.end(), [](auto& v) { return v.first == "password"; })->second;
    EXPECT_EQ(CheckPassword("old", keptHash), PasswordCheck::Match);
    locked.password = locked.confirmPassword = "new";
    for (const auto& value : SettingValues(locked, keptHash))
        if (value.first == "password")
            EXPECT_EQ(CheckPassword("new", value.second), PasswordCheck::Match);
}

TEST(PasswordHash, SchemeSaltAndOldValues)
{
    const wxString hash = HashPassword(wxString::FromUTF8("pässwört"));
    EXPECT_TRUE(hash.StartsWith("$argon2id$v=19$m=")) << hash;
    EXPECT_TRUE(IsPasswordHash(hash));
    EXPECT_NE(HashPassword(wxString::FromUTF8("pässwört")), hash) << "salted";
    EXPECT_EQ(CheckPassword(wxString::FromUTF8("pässwört"), hash), PasswordCheck::Match);
    EXPECT_EQ(CheckPassword("passwort", hash), PasswordCheck::Wrong);
    EXPECT_EQ(CheckPassword("", hash), PasswordCheck::Wrong);
    EXPECT_EQ(CheckPassword("x", ""), PasswordCheck::Wrong) << "no password stored opens nothing";
    EXPECT_EQ(CheckPassword("x", "$argon2id$broken"), PasswordCheck::Wrong);
    // The plain value of older versions: accepted, and flagged for a hash.
    EXPECT_EQ(CheckPassword("secret", "secret"), PasswordCheck::MatchNeedsUpgrade);
    EXPECT_EQ(CheckPassword("secre", "secret"), PasswordCheck::Wrong);
    EXPECT_FALSE(IsPasswordHash("secret"));
    const int delays[][2] = {{0, 0}, {1, 500}, {2, 1000}, {3, 2000}, {5, 8000}, {40, 8000}};
    for (const auto& row : delays)
        EXPECT_EQ(UnlockRetryDelayMs(row[0]), row[1]) << row[0];
}

TEST(Autostart, ExecArgumentQuoting)
{
    const char* rows[][2] = {
        {"/usr/bin/cadrelle", "/usr/bin/cadrelle"},
        {"/opt/my apps/cadrelle", "\"/opt/my apps/cadrelle\""},
        {"/opt/a$b/c\"d", "\"/opt/a\\\\$b/c\\\\\"d\""},
        {"/opt/100%/cadrelle", "/opt/100%%/cadrelle"},
        {"/opt/back\\slash", "\"/opt/back\\\\\\\\slash\""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(DesktopExecArgument(row[0]), row[1]) << row[0];
}

class AutostartEntry : public testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/cadrelle-autostart-XXXXXX";
        m_dir = wxString::FromUTF8(::mkdtemp(pattern));
        ::setenv("XDG_CONFIG_HOME", (m_dir + "/home").utf8_str(), 1);
        ::setenv("XDG_CONFIG_DIRS", (m_dir + "/etc1:" + m_dir + "/etc2").utf8_str(), 1);
    }
    void TearDown() override { wxFileName::Rmdir(m_dir, wxPATH_RMDIR_RECURSIVE); }
    wxString Entry()
    {
        wxString text;
        wxFFile(AutostartEntryPath()).ReadAll(&text);
        return text;
    }
    wxString m_dir;
};

TEST_F(AutostartEntry, WrittenReadBackAndTurnedOff)
{
    const wxString exe = "/opt/my apps/cadrelle";
    EXPECT_FALSE(IsAutostartEnabled());
    ASSERT_TRUE(SetAutostart(true, exe));
    EXPECT_EQ(AutostartEntryPath(), m_dir + "/home/autostart/cadrelle.desktop");
    EXPECT_TRUE(IsAutostartEnabled());
    EXPECT_NE(Entry().Find("\nExec=\"/opt/my apps/cadrelle\"\n"), wxNOT_FOUND) << Entry();
    EXPECT_NE(Entry().Find("\nHidden=false\n"), wxNOT_FOUND);
    EXPECT_NE(Entry().Find("\nX-GNOME-Autostart-enabled=true\n"), wxNOT_FOUND);
    const wxString validate = "desktop-file-validate '" + AutostartEntryPath() + "' 2>&1";
    EXPECT_EQ(std::system(validate.utf8_str()), 0) << Entry();

    ASSERT_TRUE(SetAutostart(false, exe));  // no system-wide entry: deleted
    EXPECT_FALSE(wxFileName::FileExists(AutostartEntryPath()));
    EXPECT_TRUE(SetAutostart(false, exe)) << "already off";

    // A system-wide entry of the same name is hidden by the user's.
    wxFileName::Mkdir(m_dir + "/etc2/autostart", 0700, wxPATH_MKDIR_FULL);
    wxFFile(m_dir + "/etc2/autostart/cadrelle.desktop", "w").Write("[Desktop Entry]\n");
    ASSERT_TRUE(SetAutostart(false, exe));
    EXPECT_NE(Entry().Find("\nHidden=true\n"), wxNOT_FOUND);
    EXPECT_FALSE(IsAutostartEnabled());
    EXPECT_EQ(std::system(validate.utf8_str()), 0) << Entry();
    ASSERT_TRUE(SetAutostart(true, exe));
    EXPECT_TRUE(IsAutostartEnabled());

    // Turned off by another tool: not shown as on.
    wxFFile(AutostartEntryPath(), "w").Write("[Desktop Entry]\nType=Application\nName=C\nExec=c\n"
                                             "X-GNOME-Autostart-enabled=false\n");
    EXPECT_FALSE(IsAutostartEnabled());
}

TEST_F(AutostartEntry, FailuresAreLogged)
{
    wxFFile(m_dir + "/home", "w").Write("a file where the folder should be");
    wxLogBuffer buffer;
    wxLog* previous = wxLog::SetActiveTarget(&buffer);
    EXPECT_FALSE(SetAutostart(true, "/usr/bin/cadrelle"));
    EXPECT_FALSE(SetAutostart(true, "relative/cadrelle"));
    wxFileName::Mkdir(m_dir + "/etc1/autostart", 0700, wxPATH_MKDIR_FULL);
    wxFFile(m_dir + "/etc1/autostart/cadrelle.desktop", "w").Write("[Desktop Entry]\n");
    EXPECT_FALSE(SetAutostart(false, "/usr/bin/cadrelle"));
    wxString log = buffer.GetBuffer();  // before the switch back flushes it
    wxLog::SetActiveTarget(previous);
    EXPECT_EQ(log.Replace("*** RegSetValueEx - Error", ""), 2u) << log;
    EXPECT_EQ(log.Replace("*** RegDeleteValue - Error", ""), 1u) << log;
}

}  // namespace

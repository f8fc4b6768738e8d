// Settings form rules, password hashes and the autostart entry, without a display.

#include <cstdlib>
#include <functional>
#include <map>
#include <tuple>

#include <gtest/gtest.h>
#include <wx/ffile.h>
#include <wx/filename.h>

#include "core/prefs/password_hash.h"
#include "core/prefs/preference.h"
#include "core/prefs/setting_rules.h"
#include "desktop/platform/autostart.h"
#include "harness.h"

namespace {

TEST(SettingForm, RefusalsAndNotices)
{
    // what, change to the default form, stored password, refusal, notices after storing
    const std::tuple<const char*, std::function<void(SettingForm&)>, wxString, wxString, size_t> rows[] = {
        {"defaults", [](SettingForm&) {}, "", "", 0},
        {"same key, other modifier", [](SettingForm& f) { f.hotKeys[4] = {kHotKeyAlt, '0'}; }, "", "", 1},
        {"two keys alike", [](SettingForm& f) { f.hotKeys[4] = {kHotKeyShift, '0'}; }, "",
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
        {"key and tray", [](SettingForm& f) { f.hideTrayIcon = true, f.hotKeys[0].keyCode = 'Z'; }, "", "", 2},
    };
    const Preference defaults(nullptr);  // the built-in values, no file
    for (const auto& [what, change, stored, refusal, notices] : rows) {
        SettingForm form = FormFromSettings(defaults, false);
        change(form);
        EXPECT_EQ(ValidateSettingForm(form, stored), refusal) << what;
        EXPECT_EQ(SettingChangeNotices(defaults, form).size(), notices) << what;
    }
}

TEST(SettingForm, ReadAndStoredValues)
{
    Preference prefs(nullptr);
    prefs.SetValue("hotkeyPauseMode2", "1");  // Alt
    prefs.SetValue("hotkeyCust12", "5");      // Shift wins
    prefs.SetValue("hotkeyCust23", "200");    // not one of the keys: its default
    prefs.SetValue("hideNotifyWnd", "1");
    const SettingForm form = FormFromSettings(prefs, true);
    EXPECT_TRUE(form.autostart && form.hideNotifyWnd && form.preserveMainFrmSize && !form.usePassword);
    EXPECT_EQ(wxString::Format("%d %d %c", form.hotKeys[1].modifiers, form.hotKeys[2].modifiers, form.hotKeys[3].keyCode),
              "1 4 7");

    auto stored = [](const SettingForm& f, const wxString& password) {
        std::map<wxString, wxString> values;
        for (const auto& value : SettingValues(f, password))
            values[value.first] = value.second;
        return values;
    };
    auto values = stored(form, "old");
    EXPECT_EQ(values.size(), 22u) << "every key the dialog edits";
    EXPECT_EQ(values["hotkeyPauseMode2"] + values["hotkeyCust23"] + values["hotkeyAssociatedJID3"], "1552");
    EXPECT_EQ(values["password"], "") << "no password box, no password";
    SettingForm locked = form;
    locked.usePassword = true;
    const wxString kept = stored(locked, "old")["password"];  // an old plain value kept, hashed
    EXPECT_EQ(CheckPassword("old", kept), PasswordCheck::Match);
    locked.password = locked.confirmPassword = "new";
    EXPECT_EQ(CheckPassword("new", stored(locked, kept)["password"]), PasswordCheck::Match);
}

TEST(PasswordHash, SchemeSaltAndOldValues)
{
    const wxString hash = HashPassword(wxString::FromUTF8("pässwört"));
    EXPECT_TRUE(hash.StartsWith("$argon2id$v=19$m=")) << hash;
    EXPECT_NE(HashPassword(wxString::FromUTF8("pässwört")), hash) << "salted";
    EXPECT_EQ(CheckPassword("passwort", hash), PasswordCheck::Wrong);
    EXPECT_EQ(CheckPassword("x", ""), PasswordCheck::Wrong) << "no password stored opens nothing";
    // The plain value of older versions: accepted, and flagged for a hash.
    EXPECT_EQ(CheckPassword("secret", "secret"), PasswordCheck::MatchNeedsUpgrade);
    const int delays[][2] = {{0, 0}, {1, 500}, {2, 1000}, {3, 2000}, {5, 8000}, {40, 8000}};
    for (const auto& row : delays)
        EXPECT_EQ(UnlockRetryDelayMs(row[0]), row[1]) << row[0];
}

TEST(Autostart, ExecArgumentQuoting)
{
    const char* rows[][2] = {{"/usr/bin/cadrelle", "/usr/bin/cadrelle"},
                             {"/opt/my apps/cadrelle", "\"/opt/my apps/cadrelle\""},
                             {"/opt/a$b/c\"d", "\"/opt/a\\\\$b/c\\\\\"d\""},
                             {"/opt/100%/cadrelle", "/opt/100%%/cadrelle"},
                             {"/opt/back\\slash", "\"/opt/back\\\\\\\\slash\""}};
    for (const auto& row : rows)
        EXPECT_EQ(DesktopExecArgument(row[0]), row[1]) << row[0];
}

// XDG_CONFIG_HOME and two XDG_CONFIG_DIRS in a fresh folder per test.
struct AutostartEntry : testing::Test {
    static wxString Entry()
    {
        wxString text;
        return wxFFile(AutostartEntryPath()).ReadAll(&text) ? text : wxString();
    }
    const TempDir dir;
    const wxString m_dir = dir.Path();
    const ScopedEnv home{"XDG_CONFIG_HOME", (m_dir + "/home").utf8_str()};
    const ScopedEnv dirs{"XDG_CONFIG_DIRS", (m_dir + "/etc1:" + m_dir + "/etc2").utf8_str()};
};

TEST_F(AutostartEntry, WrittenReadBackAndTurnedOff)
{
    const wxString exe = "/opt/my apps/cadrelle";
    EXPECT_FALSE(IsAutostartEnabled());
    ASSERT_TRUE(SetAutostart(true, exe));
    EXPECT_EQ(AutostartEntryPath(), m_dir + "/home/autostart/cadrelle.desktop");
    EXPECT_TRUE(IsAutostartEnabled());
    for (const char* line : {"\nExec=\"/opt/my apps/cadrelle\"\n", "\nHidden=false\n", "\nX-GNOME-Autostart-enabled=true\n"})
        EXPECT_NE(Entry().Find(line), wxNOT_FOUND) << Entry();
    EXPECT_EQ(std::system(("desktop-file-validate '" + AutostartEntryPath() + "'").utf8_str()), 0) << Entry();

    ASSERT_TRUE(SetAutostart(false, exe));  // no system-wide entry: deleted
    EXPECT_FALSE(wxFileName::FileExists(AutostartEntryPath()));

    // A system-wide entry of the same name is hidden by the user's.
    wxFileName::Mkdir(m_dir + "/etc2/autostart", 0700, wxPATH_MKDIR_FULL);
    wxFFile(m_dir + "/etc2/autostart/cadrelle.desktop", "w").Write("[Desktop Entry]\n");
    ASSERT_TRUE(SetAutostart(false, exe));
    EXPECT_NE(Entry().Find("\nHidden=true\n"), wxNOT_FOUND);
    EXPECT_FALSE(IsAutostartEnabled());
    // An entry another tool turned off counts as off.
    wxFFile(AutostartEntryPath(), "w").Write("[Desktop Entry]\nType=Application\nName=C\nExec=c\nX-GNOME-Autostart-enabled=false\n");
    EXPECT_FALSE(IsAutostartEnabled());
}

TEST_F(AutostartEntry, FailuresAreLogged)
{
    wxFFile(m_dir + "/home", "w").Write("a file where the folder should be");
    CapturedLog log;
    EXPECT_FALSE(SetAutostart(true, "/usr/bin/cadrelle"));
    EXPECT_EQ(log.Matching("*** RegSetValueEx - Error").size(), 1u);
}

}  // namespace

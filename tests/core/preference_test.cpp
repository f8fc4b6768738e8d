// Preferences: defaults, the encoded store, the load rules, and the codec.

#include <map>

#include <gtest/gtest.h>
#include <wx/fileconf.h>

#include "core/clock.h"
#include "core/prefs/password_hash.h"
#include "core/prefs/preference.h"
#include "core/prefs/vtx_codec.h"
#include "test_support.h"

namespace {

std::unique_ptr<wxFileConfig> OpenConfig(const wxString& path)
{
    auto config = std::make_unique<wxFileConfig>("Cadrelle", "Vantrel", path, wxEmptyString, wxCONFIG_USE_LOCAL_FILE);
    config->SetUmask(0077);
    return config;
}

// Reads the stored value of `key` straight from the file, decoded.
wxString StoredText(const wxString& path, const wxString& key)
{
    auto config = OpenConfig(path);
    wxString stored;
    config->Read(VtxEncode(key), &stored);
    return VtxDecode(stored);
}

}  // namespace

// Stored names and values are encoded: any text round-trips, the result is a
// valid entry name, the text never shows, and junk decodes to nothing.
TEST(VtxCodec, RoundTripsAnyTextAndRefusesJunk)
{
    for (const wxString& text : {wxString(""), wxString(" blanks around "), wxString("slash/and=equals;semi"),
                                 wxString("line\nbreak\ttab"), wxString::FromUTF8("Ünïcödé 日本語 🙂"), wxString(1000, 'x')}) {
        SCOPED_TRACE(text);
        const wxString encoded = VtxEncode(text);
        bool ok = false;
        EXPECT_EQ(VtxDecode(encoded, &ok), text);
        EXPECT_TRUE(ok);
        EXPECT_EQ(encoded.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"),
                  wxString::npos);
        EXPECT_TRUE(text.empty() || encoded.find(text) == wxString::npos);
    }
    for (const wxString& junk : {wxString("plain"), wxString("v1!!"), wxString("v1A"), wxString("x1AAAA")}) {
        bool ok = true;
        EXPECT_EQ(VtxDecode(junk, &ok), "") << junk;
        EXPECT_FALSE(ok) << junk;
    }
}

class PreferenceTest : public ::testing::Test {
protected:

    // Stores `values` as a program run would (set, then save at exit).
    void SaveValues(std::initializer_list<std::pair<const char*, const char*>> values)
    {
        auto config = OpenConfig(path);
        Preference prefs(config.get(), clock);
        prefs.Load();
        for (const auto& value : values)
            prefs.SetValue(value.first, value.second);
        prefs.SaveSettingParam();
    }
    // What the next start sees.
    std::map<wxString, wxString> LoadValues()
    {
        auto config = OpenConfig(path);
        Preference prefs(config.get(), clock);
        prefs.Load();
        std::map<wxString, wxString> values;
        for (const auto& entry : Preference::Defaults())
            values[entry.first] = prefs.GetValue(entry.first);
        return values;
    }

    TempDir dir;
    wxString path = dir.File("Cadrelle.conf");
    ManualClock clock{1700000000000LL};
};

TEST_F(PreferenceTest, FirstStartGivesTheDefaultTableAndSavingWritesItEncoded)
{
    auto config = OpenConfig(path);
    Preference prefs(config.get(), clock);
    prefs.Load();
    for (const auto& entry : Preference::Defaults())
        EXPECT_EQ(prefs.GetValue(entry.first), entry.second) << entry.first;
    EXPECT_EQ(prefs.GetValue("no such key"), "");
    EXPECT_EQ(prefs.GetSetting("hotkeyPauseMode3"), "57");

    prefs.SaveSettingParam();
    const std::string file = ReadFileBytes(path);
    EXPECT_EQ(file.find("hotkey"), std::string::npos);  // no name is stored in plain text
    EXPECT_EQ(StoredText(path, "mainFrmW"), "1700000000" "1024");
}

TEST_F(PreferenceTest, GeometryAndPasswordRulesAtLoad)
{
    SaveValues({{"preserveMainFrmSize", "0"}, {"mainFrmX", "500"}, {"mainFrmH", "900"}, {"usePassword", "0"},
                {"password", "secret"}});
    std::map<wxString, wxString> values = LoadValues();
    EXPECT_EQ(values["mainFrmX"], "16");
    EXPECT_EQ(values["mainFrmH"], "512");
    EXPECT_EQ(values["password"], "");
    SaveValues({});  // saved again at exit: the password is gone from the file too
    EXPECT_EQ(StoredText(path, "password"), "1700000000");

    // With the password in use and the geometry kept, both come back.
    SaveValues({{"preserveMainFrmSize", "1"}, {"mainFrmX", "500"}, {"usePassword", "1"}, {"password", "secret"}});
    values = LoadValues();
    EXPECT_EQ(values["mainFrmX"], "500");
    EXPECT_EQ(values["password"], "secret");
}

TEST_F(PreferenceTest, UnreadableStoredEntriesLeaveTheDefaults)
{
    {
        auto config = OpenConfig(path);
        config->Write(VtxEncode("mainFrmW"), "not encoded");
        config->Write(VtxEncode("mainFrmH"), VtxEncode("12"));            // shorter than the prefix
        config->Write(VtxEncode("mainFrmX"), VtxEncode("17000000xx700"));  // prefix not digits
        config->Write(VtxEncode("mainFrmY"), "");
        config->Write("mainFrmX", "999");  // a plain name is not ours either
        config->Flush();
    }
    std::map<wxString, wxString> values = LoadValues();
    EXPECT_EQ(values["mainFrmW"], "1024");
    EXPECT_EQ(values["mainFrmH"], "512");
    EXPECT_EQ(values["mainFrmX"], "16");
    EXPECT_EQ(values["mainFrmY"], "16");
}

// A file that cannot be read as written is copied aside (0600) before
// anything is written, the user is told, and a password that was set stays
// required, also after the next save and start.
TEST_F(PreferenceTest, AnUnreadableFileIsKeptToldAndThePasswordStaysRequired)
{
    const struct { const char* name; std::string (*damage)(const std::string&); const char* problem; } cases[] = {
        {"UTF-16 mark", [](const std::string& b) { return "\xFF\xFE" + b; }, "it is not UTF-8 text"},
        {"NUL bytes", [](const std::string& b) { return b + std::string(4, '\0'); }, "it is not UTF-8 text"},
        {"over 1 MB", [](const std::string& b) { return b + "#" + std::string(Preference::kMaxFileSize, 'x') + "\n"; },
         "it is larger than 1 MB ("},
        {"password entry", [](const std::string& b) {
             const std::string name = VtxEncode("password").utf8_string() + "=";
             const std::size_t at = b.find(name) + name.size();
             return b.substr(0, at) + "garbage" + b.substr(b.find('\n', at));
         }, "these entries cannot be read: password"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        wxRemoveFile(path);
        SaveValues({{"usePassword", "1"}, {"password", "secret"}, {"hideTrayIcon", "1"}});
        const std::string damaged = c.damage(ReadFileBytes(path));
        WriteFileBytes(path, damaged);
        {
            auto prefs = Preference::OpenFile(path, clock);
            EXPECT_TRUE(prefs->Problem().Contains(c.problem)) << prefs->Problem();
            const wxString kept = path + ".bad-" + clock.Now().Format("%Y%m%d-%H%M%S");
            EXPECT_EQ(prefs->KeptCopy(), kept);
            EXPECT_EQ(ReadFileBytes(kept), damaged);
            struct stat st {};
            ASSERT_EQ(::stat(kept.fn_str(), &st), 0);
            EXPECT_EQ(st.st_mode & 0777, 0600u);
            EXPECT_TRUE(prefs->ProblemMessage().Contains(kept)) << prefs->ProblemMessage();
            EXPECT_TRUE(prefs->IsPasswordUnreadable());
            EXPECT_TRUE(prefs->ProblemMessage().Contains("quit Cadrelle and delete " + path));
            prefs->SaveSettingParam();
            wxRemoveFile(kept);
        }
        auto next = Preference::OpenFile(path, clock);
        EXPECT_EQ(next->Problem(), "");
        EXPECT_TRUE(next->IsPasswordUnreadable());
        EXPECT_LT(ReadFileBytes(path).size(), 4096u);
    }
}

TEST_F(PreferenceTest, AStoredPasswordThatIsNoHashIsToldNotJustRefused)
{
    const wxString hash = HashPassword("secret");
    const struct { wxString stored; bool checkable; } cases[] = {
        {"", false}, {"old plain", true}, {hash, true}, {"$argon2id$v=19$m=65536,t=2,p=1$broken", false},
        {hash.BeforeLast('$') + "$not*base64", false}, {hash + wxString(200, 'A'), false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.stored);
        EXPECT_EQ(IsCheckablePassword(c.stored), c.checkable);
        SaveValues({{"usePassword", "1"}, {"password", c.stored.utf8_str()}});
        auto prefs = Preference::OpenFile(path, clock);
        EXPECT_EQ(prefs->IsPasswordUnreadable(), !c.checkable);
        if (!c.checkable)
            EXPECT_TRUE(prefs->PasswordUnreadableMessage().Contains("quit Cadrelle and delete " + path));
    }
}

TEST(PreferenceGeometry, TheStoredWindowIsFittedToTheScreenAndTheChangeIsSaid)
{
    using G = Preference::Geometry;
    const struct { G stored, screen, fitted; const char* note; } cases[] = {
        {{16, 16, 1024, 512}, {0, 0, 1920, 1080}, {16, 16, 1024, 512}, ""},
        {{16, 16, 1024, 99999999}, {0, 0, 1920, 1080}, {16, 0, 1024, 1080}, "mainFrmH 99999999 does not fit"},
        {{5000, 16, 800, 600}, {0, 0, 1920, 1080}, {1120, 16, 800, 600}, "mainFrmX 5000 does not fit"},
        {{-300, -50, 10, 10}, {0, 0, 1920, 1080}, {0, 0, 200, 100}, "mainFrmW 10 does not fit"},
        {{100, 100, 800, 600}, {1920, 24, 1280, 1000}, {1920, 100, 800, 600}, "mainFrmX 100 does not fit"},
    };
    for (const auto& c : cases) {
        wxString note;
        EXPECT_EQ(Preference::FitToScreen(c.stored, c.screen, note), c.fitted) << c.note;
        EXPECT_EQ(note.empty(), c.note[0] == 0) << note;
        EXPECT_TRUE(note.Contains(c.note)) << note;
    }
}

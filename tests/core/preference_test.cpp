// Preferences: defaults, the encoded store, the load rules, and the codec.

#include <map>

#include <gtest/gtest.h>
#include <wx/fileconf.h>

#include "core/clock.h"
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
    void SetUp() override { SetClock(&clock); }
    void TearDown() override { SetClock(nullptr); }

    // Stores `values` as a program run would (set, then save at exit).
    void SaveValues(std::initializer_list<std::pair<const char*, const char*>> values)
    {
        auto config = OpenConfig(path);
        Preference prefs(config.get());
        prefs.Load();
        for (const auto& value : values)
            prefs.SetValue(value.first, value.second);
        prefs.SaveSettingParam();
    }
    // What the next start sees.
    std::map<wxString, wxString> LoadValues()
    {
        auto config = OpenConfig(path);
        Preference prefs(config.get());
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
    Preference prefs(config.get());
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

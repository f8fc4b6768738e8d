// The language choice as a table; each catalogue loaded from beside the built program.

#include <map>
#include <string>

#include <gtest/gtest.h>
#include <wx/filename.h>
#include <wx/init.h>

#include "core/i18n/ui_language.h"

namespace {

struct ResolveRow {  // unknown: reported as an unknown code
    const char* setting; std::map<std::string, std::string> env; const char* language; bool unknown;
};

class ResolveTest : public ::testing::TestWithParam<ResolveRow> {};

TEST_P(ResolveTest, SettingFirstThenTheEnvironmentInGettextOrder)
{
    const ResolveRow& row = GetParam();
    const UiLanguageChoice choice = ResolveUiLanguage(row.setting, [&row](const char* name) {
        const auto it = row.env.find(name);
        return it == row.env.end() ? wxString() : wxString(it->second);
    });
    EXPECT_EQ(choice.language, row.language);
    EXPECT_EQ(choice.unknownCode, row.unknown);
}

INSTANTIATE_TEST_SUITE_P(Rows, ResolveTest, ::testing::Values(
        // A forced language beats every variable.
        ResolveRow{"ja", {{"LANGUAGE", "zh_CN"}, {"LC_ALL", "en_US.UTF-8"}}, "ja", false},
        ResolveRow{"en", {{"LANGUAGE", "ja"}, {"LANG", "zh_CN.UTF-8"}}, "en", false},
        // LANGUAGE is a list: its first entry of ours wins, before the locale.
        ResolveRow{"default", {{"LANGUAGE", "fr:ja_JP:zh_CN"}, {"LANG", "zh_CN.UTF-8"}}, "ja", false},
        ResolveRow{"default", {{"LANGUAGE", "fr"}, {"LANG", "zh_CN.UTF-8"}}, "zh_CN", false},
        // The first of LC_ALL, LC_MESSAGES, LANG that is set decides alone.
        ResolveRow{"default", {{"LC_ALL", "ja_JP.UTF-8"}, {"LC_MESSAGES", "zh_CN"}, {"LANG", "en_US"}}, "ja", false},
        ResolveRow{"default", {{"LC_MESSAGES", "zh_CN.GB18030"}, {"LANG", "ja_JP"}}, "zh_CN", false},
        ResolveRow{"default", {{"LC_ALL", "C"}, {"LANG", "ja_JP"}}, "en", false},
        ResolveRow{"default", {{"LANG", "ja_JP.eucJP@mod"}}, "ja", false},
        ResolveRow{"default", {{"LANG", "zh_SG.UTF-8"}}, "zh_CN", false},
        ResolveRow{"default", {{"LANG", "zh_TW.UTF-8"}}, "en", false},  // Traditional is not ours
        ResolveRow{"default", {}, "en", false},
        // An unknown code is reported and treated as "default".
        ResolveRow{"ja_JP", {{"LANG", "zh_CN.UTF-8"}}, "zh_CN", true},
        ResolveRow{"Japanese", {}, "en", true}));

struct CatalogueRow {
    // cancel: the toolkit's own catalogue; special: a source text that English readers see corrected
    const char *language, *reminder, *emptyCron, *cancel, *special;
};

class CatalogueTest : public ::testing::TestWithParam<CatalogueRow> {};

TEST_P(CatalogueTest, LoadsBesideTheProgramAndTranslates)
{
    static wxInitializer init;
    const CatalogueRow& row = GetParam();
    ASSERT_TRUE(InstallTranslations(row.language, CatalogueFolders(wxFileName(CADRELLE_BINARY).GetPath())));
    EXPECT_EQ(_("Reminder"), wxString::FromUTF8(row.reminder));
    EXPECT_EQ(_("Invalid empty cron expression"), wxString::FromUTF8(row.emptyCron));
    EXPECT_EQ(_("Cancel"), wxString::FromUTF8(row.cancel));
    EXPECT_EQ(_("Specical Time"), wxString::FromUTF8(row.special));
}

INSTANTIATE_TEST_SUITE_P(Languages, CatalogueTest,
                         ::testing::Values(CatalogueRow{"en", "Reminder", "Invalid empty cron expression", "Cancel", "Special Time"},
                                           CatalogueRow{"zh_CN", "提醒", "Cron 表达式不能为空", "取消", "指定时间"},
                                           CatalogueRow{"ja", "リマインダー", "cron 式が空です", "キャンセル", "指定日時"}));

}  // namespace

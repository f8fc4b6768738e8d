#include "core/i18n/ui_language.h"

#include <filesystem>
#include <system_error>

#include <wx/filename.h>
#include <wx/fileconf.h>
#include <wx/log.h>
#include <wx/tokenzr.h>
#include <wx/translation.h>
#include <wx/utils.h>

#include "core/cron/cron_messages.h"
#include "core/prefs/preference.h"
#include "core/translate.h"

const char* const kUiLanguageZhCn = "zh_CN";
const char* const kUiLanguageEn = "en";
const char* const kUiLanguageJa = "ja";
const char* const kUiLanguageDefault = "default";

namespace {

const char kCatalogue[] = "Cadrelle";
const char kSettingName[] = "ui_language";

std::string TranslateCronMessage(const char* english)
{
    return std::string(TranslateFromAnyThread(english).utf8_str());
}

bool IsShippedCode(const wxString& code)
{
    return code == kUiLanguageZhCn || code == kUiLanguageEn || code == kUiLanguageJa;
}

}  // namespace

wxString ShippedLanguageOf(const wxString& localeName)
{
    // "ll_CC.charset@modifier": only the language and the country matter.
    const wxString name = localeName.BeforeFirst('.').BeforeFirst('@');
    if (name == "C" || name == "POSIX")
        return kUiLanguageEn;
    const wxString lang = name.BeforeFirst('_').Lower();
    const wxString rest = name.AfterFirst('_');
    if (lang == "ja")
        return kUiLanguageJa;
    if (lang == "en")
        return kUiLanguageEn;
    // Plain "zh" is read as Simplified; the regions and the script that
    // write Traditional Chinese are not ours.
    if (lang == "zh" && rest != "TW" && rest != "HK" && rest != "MO" && rest != "Hant")
        return kUiLanguageZhCn;
    return wxString();
}

UiLanguageChoice ResolveUiLanguage(const wxString& setting, const EnvironmentLookup& env)
{
    UiLanguageChoice choice;
    if (IsShippedCode(setting)) {
        choice.language = setting;
        return choice;
    }
    choice.unknownCode = !setting.empty() && setting != kUiLanguageDefault;

    // LANGUAGE is a priority list; it is honoured even under the C locale
    // (unlike gettext) so that LANGUAGE=ja alone is enough.
    wxArrayString candidates = wxStringTokenize(env("LANGUAGE"), ":", wxTOKEN_STRTOK);
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const wxString value = env(name);
        if (!value.empty()) {
            candidates.push_back(value);
            break;
        }
    }
    for (const wxString& candidate : candidates) {
        const wxString language = ShippedLanguageOf(candidate);
        if (!language.empty()) {
            choice.language = language;
            return choice;
        }
    }
    choice.language = kUiLanguageEn;
    return choice;
}

wxString ReadUiLanguageSetting()
{
    const wxString path = Preference::UserConfigPath();
    if (!wxFileName::FileExists(path))
        return kUiLanguageDefault;
    // A file too large to be ours is not parsed (the preferences keep and
    // report it).
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(std::filesystem::path(path.fn_str().data()), error);
    if (error || size > Preference::kMaxFileSize)
        return kUiLanguageDefault;
    wxLogNull quiet;  // an unreadable file means the default, not a dialog
    wxFileConfig config(kCatalogue, "Vantrel", path, wxEmptyString, wxCONFIG_USE_LOCAL_FILE);
    wxString value;
    if (!config.Read(kSettingName, &value))
        return kUiLanguageDefault;
    return value;
}

std::vector<wxString> CatalogueFolders(const wxString& exeDir)
{
    wxFileName portable = wxFileName::DirName(exeDir);
    portable.AppendDir("locales");
    wxFileName installed = wxFileName::DirName(exeDir);
    installed.AppendDir("..");
    installed.AppendDir("share");
    installed.AppendDir("locale");
    installed.Normalize(wxPATH_NORM_DOTS | wxPATH_NORM_ABSOLUTE);
    return {portable.GetPath(), installed.GetPath()};
}

bool InstallTranslations(const wxString& language, const std::vector<wxString>& folders)
{
    for (const wxString& folder : folders)
        wxFileTranslationsLoader::AddCatalogLookupPathPrefix(folder);
    auto* translations = new wxTranslations;
    translations->SetLanguage(language);
    wxTranslations::Set(translations);  // owns it from here, drops the previous one
    // The toolkit's own texts (stock buttons, standard dialogs), then ours.
    translations->AddStdCatalog();
    // English has a catalogue too (corrected words); the program's texts are
    // English, so it is not missing when absent.
    const bool loaded = translations->AddCatalog(kCatalogue, wxLANGUAGE_UNKNOWN);
    return language == kUiLanguageEn || loaded;
}

wxString SetUpUiLanguage(const wxString& exeDir)
{
    const wxString setting = ReadUiLanguageSetting();
    const UiLanguageChoice choice = ResolveUiLanguage(setting, [](const char* name) {
        wxString value;
        wxGetEnv(name, &value);
        return value;
    });
    if (choice.unknownCode)
        wxLogMessage("Uknown locale code '%s' in registry.", setting);

    if (!InstallTranslations(choice.language, CatalogueFolders(exeDir)))
        wxLogMessage("No catalogue %s for language %s.", kCatalogue, choice.language);
    cron::SetMessageTranslator(TranslateCronMessage);
    return choice.language;
}

#pragma once
// The language of everything the user reads: chosen by the stored
// "ui_language" setting, or by the environment the way gettext reads it, and
// loaded with wxTranslations alone. wxLocale is not used: it fails when the
// system locale of that language is not generated, and translations do not
// need it, so a machine with only the C locale still gets its language.
// Log lines stay in English whatever is chosen.

#include <functional>
#include <vector>

#include <wx/string.h>

// The languages with a catalogue, as stored under "ui_language" and as the
// names of the catalogue folders. English is the language of the texts
// themselves and has no catalogue.
extern const char* const kUiLanguageZhCn;  // "zh_CN"
extern const char* const kUiLanguageEn;    // "en"
extern const char* const kUiLanguageJa;    // "ja"

// The setting's value meaning "follow the environment".
extern const char* const kUiLanguageDefault;  // "default"

struct UiLanguageChoice {
    wxString language;         // kUiLanguageZhCn, kUiLanguageEn or kUiLanguageJa
    bool unknownCode = false;  // the setting named no language of ours
};

// An environment variable's value, empty when unset.
using EnvironmentLookup = std::function<wxString(const char* name)>;

// The language a locale name stands for ("ja_JP.UTF-8" -> "ja", "zh_SG" ->
// "zh_CN", "C" -> "en"); empty when it is none of ours (e.g. "zh_TW", "fr").
wxString ShippedLanguageOf(const wxString& localeName);

// `setting` is the stored "ui_language" ("default", a code, or anything).
// "default" and unknown codes follow the environment: the entries of
// LANGUAGE in order, then the first of LC_ALL, LC_MESSAGES, LANG that is
// set; the first that names one of our languages wins, English otherwise.
UiLanguageChoice ResolveUiLanguage(const wxString& setting, const EnvironmentLookup& env);

// The stored setting, "default" when absent. Read-only: nothing is created.
wxString ReadUiLanguageSetting();

// Where catalogues are looked up: beside a portable build
// (<exe dir>/locales/<code>/LC_MESSAGES/) and in the installed prefix
// (<exe dir>/../share/locale/<code>/LC_MESSAGES/).
std::vector<wxString> CatalogueFolders(const wxString& exeDir);

// Installs wxTranslations for `language` (one of ours) with catalogues
// looked up in `folders`: the toolkit's own catalogue, then "Cadrelle".
// Returns false when our catalogue of a translated language was not found.
bool InstallTranslations(const wxString& language, const std::vector<wxString>& folders);

// Resolves the language from the setting and the process environment (an
// unknown code is logged), installs wxTranslations with the toolkit's own
// catalogue and "Cadrelle", and returns the language. Call once at start-up,
// before any text is translated, in the window and the command-line modes.
wxString SetUpUiLanguage(const wxString& exeDir);

// Lets the toolkit's own texts (stock buttons, message boxes, file choosers)
// follow `language` too: sets LANGUAGE, which programs started by jobs
// inherit, and the messages locale where it is C. The window calls it once,
// right after SetUpUiLanguage.
void ShareUiLanguageWithToolkit(const wxString& language);

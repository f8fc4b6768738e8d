#include <clocale>
#include <cstring>

#include <wx/utils.h>

#include "core/i18n/ui_language.h"

void ShareUiLanguageWithToolkit(const wxString& language)
{
    // GTK translates its stock buttons and its own dialogs through gettext,
    // which reads LANGUAGE but ignores it under the C locale. C.UTF-8 is
    // built into the C library, so it is there even where no locale was
    // generated; only the messages category changes.
    wxSetEnv("LANGUAGE", language);
    const char* current = std::setlocale(LC_MESSAGES, nullptr);
    if (current && (std::strcmp(current, "C") == 0 || std::strcmp(current, "POSIX") == 0))
        std::setlocale(LC_MESSAGES, "C.UTF-8");
}

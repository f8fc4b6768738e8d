#include <windows.h>

#include <wx/intl.h>

#include "core/i18n/ui_language.h"

void ShareUiLanguageWithToolkit(const wxString& language)
{
    // The system's own texts (common dialogs, message box buttons) come from
    // its language resources, chosen per thread: ask for `language` on the
    // main thread, where those windows run. Windows falls back to the
    // installed display language when it has no resources for it.
    const wxLanguageInfo* info = wxLocale::FindLanguageInfo(language);
    if (!info)
        return;
    ::SetThreadUILanguage(MAKELANGID(info->WinLang, info->WinSublang));
}

#include "core/translate.h"

#include <mutex>

#include <wx/intl.h>

wxString TranslateFromAnyThread(const char* text)
{
    static std::mutex mutex;
    std::lock_guard<std::mutex> lock(mutex);
    // A copy, not a reference into the toolkit's table.
    return wxString(wxGetTranslation(text).wc_str());
}

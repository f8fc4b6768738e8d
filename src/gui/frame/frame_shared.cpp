#include "gui/frame/frame_shared.h"

#include <cstring>

#include <wx/msgdlg.h>

#include "core/prefs/preference.h"

namespace frame {

const char* const kCaption = "Cadrelle";

bool PrefIsOn(const Preference& prefs, const char* key)
{
    return prefs.GetValue(key) == "1";
}

long PrefNumber(const Preference& prefs, const char* key)
{
    long value = 0;
    if (prefs.GetValue(key).ToLong(&value))
        return value;
    for (const auto& entry : Preference::Defaults())
        if (std::strcmp(entry.first, key) == 0 && wxString(entry.second).ToLong(&value))
            return value;
    return 0;
}

void Tell(wxWindow* parent, const wxString& text, long icon)
{
    wxMessageBox(text, kCaption, wxOK | icon, parent);
}

bool Ask(wxWindow* parent, const wxString& text)
{
    return wxMessageBox(text, kCaption, wxYES_NO | wxICON_QUESTION, parent) == wxYES;
}

}  // namespace frame

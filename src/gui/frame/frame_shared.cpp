#include "gui/frame/frame_shared.h"

#include <wx/msgdlg.h>

#include "core/prefs/preference.h"

namespace frame {

const char* const kCaption = "Cadrelle";

bool PrefIsOn(const char* key)
{
    return Preference::Instance().GetValue(key) == "1";
}

long PrefNumber(const char* key, long fallback)
{
    long value = 0;
    return Preference::Instance().GetValue(key).ToLong(&value) ? value : fallback;
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

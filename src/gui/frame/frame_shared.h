#pragma once
// What the frame's source files share: command ids and the small helpers of
// its message boxes and preferences.

#include <wx/defs.h>
#include <wx/string.h>

class wxWindow;

class Preference;

namespace frame {

enum {
    ID_TBI_NEWJOB = wxID_HIGHEST + 100,
    ID_TBI_EDITJOB,
    ID_TBI_ENABLEJOB,
    ID_TBI_DELJOB,
    ID_TBI_TESTEXEC,
    ID_TBI_RESETTRIGGER,
    ID_TBI_BLOCK,
    ID_TBI_PAUSE,
    ID_TBI_SETTING,
    ID_TBI_ABOUT,
    ID_PPM_COPYJOB,
    ID_PPM_ENABLEALL,
    ID_PPM_DISABLEALL,
    ID_MNU_NEWJOB,
    ID_MNU_LANGUAGE,
    ID_FIND_JOB,
    ID_MNU_AGENDA,
    ID_MNU_IMPORT_CRONTAB,
    ID_MNU_IMPORT_JOBS,
    ID_MNU_EXPORT_JOBS,
    ID_TIMER_SESSION
};

extern const char* const kCaption;
bool PrefIsOn(const Preference& prefs, const char* key);
// A number setting; the built-in default when the stored value is not one.
long PrefNumber(const Preference& prefs, const char* key);
// A message box captioned "Cadrelle".
void Tell(wxWindow* parent, const wxString& text, long icon = wxICON_INFORMATION);
// A yes/no question captioned "Cadrelle"; true for yes.
bool Ask(wxWindow* parent, const wxString& text);

}  // namespace frame

#pragma once
// wxGetTranslation keeps a process-wide table of untranslated texts that it
// changes without a lock, so two threads asking at once corrupt it. Worker
// threads (job and checker threads) translate through this instead.

#include <wx/string.h>

wxString TranslateFromAnyThread(const char* text);

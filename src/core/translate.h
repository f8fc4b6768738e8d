#pragma once
// wxGetTranslation keeps a process-wide table of untranslated texts that it
// changes without a lock, so two threads asking at once corrupt it. The rule
// is therefore: every translation in our code, on any thread, goes through
// TranslateFromAnyThread, which takes one process-wide lock.
//
// The compiler includes this header first in every C++ file of every target
// that links cadrelle_core (a forced include, see src/core/CMakeLists.txt),
// so nobody has to remember it. After the toolkit's own headers it redefines
// `_()`, `wxPLURAL`, `wxGETTEXT_IN_CONTEXT*` and `wxGetTranslation()` itself
// to take the lock; the include guards of <wx/intl.h> and <wx/translation.h>
// keep later includes from bringing the toolkit's definitions back. Inline
// code of wx headers included later takes the lock too. <wx/intl.h> comes
// first because its inline code returns references into the table, which a
// by-value result must not replace.

#include <mutex>
#include <utility>

#include <wx/intl.h>
#include <wx/string.h>
#include <wx/translation.h>

// The lock held around every wxGetTranslation call of the program.
std::mutex& TranslationMutex();

// wxGetTranslation under the lock, with its arguments (text; text, domain,
// context; singular, plural, count, ...). The result is a copy, not a
// reference into the toolkit's table. (Defined before the macros below, so
// the call here is the toolkit's function.)
template <typename... Args>
wxString TranslateFromAnyThread(Args&&... args)
{
    std::lock_guard<std::mutex> lock(TranslationMutex());
    return wxString(wxGetTranslation(std::forward<Args>(args)...).wc_str());
}

#undef _
#define _(s) TranslateFromAnyThread((s))
#undef wxPLURAL
#define wxPLURAL(sing, plur, n) TranslateFromAnyThread((sing), (plur), n)
#undef wxGETTEXT_IN_CONTEXT
#define wxGETTEXT_IN_CONTEXT(c, s) TranslateFromAnyThread((s), wxString(), c)
#undef wxGETTEXT_IN_CONTEXT_PLURAL
#define wxGETTEXT_IN_CONTEXT_PLURAL(c, sing, plur, n) TranslateFromAnyThread((sing), (plur), n, wxString(), c)
#define wxGetTranslation(...) TranslateFromAnyThread(__VA_ARGS__)

#pragma once
// Files the program writes are the user's alone (0600 whatever the umask).
// A data file is replaced as a whole: the content goes to a fresh temporary
// file beside it (created exclusively, never through a link), is flushed to
// disk and renamed over the target, so a crash at any moment leaves either
// the old file or the new one. A target that is a symbolic link stays one:
// the file it points to is replaced, in that file's folder.

#include <cstdio>
#include <string>

#include <wx/string.h>

bool WriteFileAtomically(const wxString& path, const std::string& content, wxString* error);

// An `error` of WriteFileAtomically with the temporary file's random name
// replaced by its pattern (<file>.tmp-XXXXXX): two failures that differ only
// in that name are the same failure.
wxString WithoutTemporaryName(const wxString& error);

// Creates the folder (and its parents) readable by the user only, if missing.
bool EnsurePrivateDir(const wxString& dir, wxString* error);

// Copies `from` to the new file `to` (which must not exist), mode 0600.
bool CopyFilePrivately(const wxString& from, const wxString& to, wxString* error);

// Sets an existing file to mode 0600.
bool MakePrivate(const wxString& path);

// fopen for "a", "a+", "w" and "w+" whose file, when created, is 0600 whatever
// the umask; an existing file is set to 0600 too.
FILE* OpenPrivateFile(const wxString& path, const char* mode);

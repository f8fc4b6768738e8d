#pragma once
// Replaces a file as a whole: the content goes to a temporary file in the
// same folder, is flushed to disk, and is renamed over the target, so a crash
// at any moment leaves either the old file or the new one, never a torn one.
// New files are readable and writable by the user only.

#include <string>

#include <wx/string.h>

bool WriteFileAtomically(const wxString& path, const std::string& content, wxString* error);

// Creates the folder (and its parents) readable by the user only, if missing.
bool EnsurePrivateDir(const wxString& dir, wxString* error);

#pragma once
// The reversible text encoding of the preference store: entry names and
// values are stored encoded, never as plain text.
//
// Encoding: the text's UTF-8 bytes, each mixed with a position-dependent key
// byte (XOR), written in base64 with the URL-safe alphabet (A-Z a-z 0-9 - _)
// and no padding, behind the marker "v1". The result is a valid name for any
// configuration store: no separators, no blanks, no "=".

#include <wx/string.h>

wxString VtxEncode(const wxString& text);
// The inverse of VtxEncode. A text that VtxEncode cannot have produced gives
// an empty text and sets *ok to false (when ok is given).
wxString VtxDecode(const wxString& encoded, bool* ok = nullptr);

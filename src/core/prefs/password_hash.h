#pragma once
// The unlock password is never kept in a form that gives it back. The
// `password` preference holds an Argon2id hash in libsodium's text form,
// which names the scheme and its costs ("$argon2id$v=19$m=...,t=...,p=...$
// salt$hash"), so stronger settings can replace old hashes later. A value
// without that prefix is the plain password that older versions stored: it
// is still accepted, and the caller then stores HashPassword(typed) so that
// the next save no longer holds it.

#include <wx/string.h>

// A new salted hash of `password`; empty if hashing failed (out of memory).
wxString HashPassword(const wxString& password);

// True when `stored` is a hash this program wrote, not an old plain value.
bool IsPasswordHash(const wxString& stored);

// True when a typed password can be checked against `stored`: an old plain
// value or a hash that libsodium can read. An empty value, or a damaged hash
// (one that no password could ever match), cannot.
bool IsCheckablePassword(const wxString& stored);

enum class PasswordCheck {
    Wrong,
    Match,
    // Right password, but the stored value is an old plain one or a hash with
    // weaker costs than today's: store a fresh HashPassword(typed).
    MatchNeedsUpgrade,
};

// Compares `typed` with the stored value in constant time. An empty stored
// value matches nothing.
PasswordCheck CheckPassword(const wxString& typed, const wxString& stored);

// How long the unlock dialog refuses further tries after `failures`
// consecutive wrong passwords: none before the first, then 500 ms doubling
// up to 8 s.
int UnlockRetryDelayMs(int failures);

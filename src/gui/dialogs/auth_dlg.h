#pragma once
// The password lock.

class wxWindow;

// Asks for the unlock password modally; true only when the right password
// was entered ("Enter"), false for "Exit" or a closed dialog.
bool AskUnlockPassword(wxWindow* parent);

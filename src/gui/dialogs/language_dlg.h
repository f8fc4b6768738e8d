#pragma once
// The language chooser.

class Preference;
class wxWindow;

// Shows the choice of languages; a new choice is stored under "ui_language"
// and the user is told to restart.
void ShowLanguageChooser(wxWindow* parent, Preference& prefs);

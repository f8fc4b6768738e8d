#pragma once
// The key names of "Send Key" jobs (the editor's choices for Key 1 to Key 3)
// and the keys they stand for.

#include <optional>
#include <vector>

#include <wx/string.h>

#include "desktop/platform/input_simulator.h"

struct KeyNameEntry {
    const char* name;
    InputKey key;
    // False for a second spelling that is accepted but not offered.
    bool offered;
};

// Every accepted name, the offered ones in the order an editor lists them.
const std::vector<KeyNameEntry>& KeyNameTable();

// The key of a name; blanks around it and letter case do not matter.
std::optional<InputKey> KeyFromName(const wxString& name);

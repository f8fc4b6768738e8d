#pragma once
// The session the launch tests run in, made before anything touches GIO (it
// caches what it reads): the launcher's X display, HOME and the XDG folders
// in a temporary folder, recorder handlers registered as the default
// applications, and no session bus.

#include <map>
#include <string>
#include <vector>

#include "core/settings_lookup.h"
#include "harness.h"

namespace launch_test {

// Folders of the session (UTF-8 paths), valid while the tests run.
struct Session {
    std::string root;
    std::string bin;    // recorder programs, first in PATH
    std::string calls;  // each recorder call leaves <pid>.args (NUL-separated)
    std::string work;   // scratch space, emptied before each test
};
const Session& GetSession();

// Every call recorded since the calls folder was last emptied, oldest first.
std::vector<std::vector<std::string>> RecordedCalls();
void ClearRecordedCalls();
// Waits until `count` calls were recorded, or the time-out passed.
std::vector<std::vector<std::string>> WaitForCalls(std::size_t count);

// Child processes of this test program: a launch must leave none (a zombie
// or a child still waited for).
std::vector<std::string> StrayChildren();

// Preferences with chosen values; the rest are the defaults.
class ChosenSettings : public SettingsLookup {
public:
    std::map<wxString, wxString> values;
    wxString GetSetting(const wxString& name) const override;
};

std::string ReadText(const std::string& path);
void WriteText(const std::string& path, const std::string& text, bool executable = false);
bool Exists(const std::string& path);

}  // namespace launch_test

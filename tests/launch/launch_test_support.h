#pragma once
// The session the launch tests run in, made before anything touches GIO (it
// caches what it reads): a private Xvfb, HOME and the XDG folders in a
// temporary folder, recorder handlers registered as the default applications,
// and no session bus. Also log capture and small helpers.

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <wx/log.h>

#include "core/jobs/job.h"
#include "captured_log.h"
#include "core/settings_lookup.h"

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
std::vector<std::vector<std::string>> WaitForCalls(std::size_t count,
                                                   std::chrono::milliseconds timeout = std::chrono::seconds(10));

bool WaitUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout = std::chrono::seconds(10));

// Child processes of this test program other than its Xvfb: a launch must
// leave none (a zombie or a child still waited for).
std::vector<std::string> StrayChildren();

// Preferences with chosen values; the rest are the defaults.
class ChosenSettings : public SettingsLookup {
public:
    std::map<wxString, wxString> values;
    wxString GetSetting(const wxString& name) const override;
};

// Runs a job of `kind` with `params` on the calling thread; returns its
// summary (what the notices start with).
wxString RunJob(std::uint32_t kind, const ParamList& params, std::int32_t jid = 7);

std::string ReadText(const std::string& path);
void WriteText(const std::string& path, const std::string& text, bool executable = false);
bool Exists(const std::string& path);

}  // namespace launch_test

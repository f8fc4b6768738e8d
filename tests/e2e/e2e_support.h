#pragma once
// The real program as a child process: HOME and the XDG folders in the
// test's folder, no display and no session bus unless given.

#include <string>

#include <wx/dir.h>
#include <wx/filename.h>

#include "harness.h"

inline ChildEnvironment ProgramEnvironment(const std::string& home, ChildEnvironment extra = {})
{
    wxFileName::Mkdir(wxString::FromUTF8(home), 0700, wxPATH_MKDIR_FULL);
    ChildEnvironment environment = {
        {"HOME", home}, {"XDG_CONFIG_HOME", home + "/.config"}, {"XDG_DATA_HOME", home + "/.local/share"},
        {"XDG_RUNTIME_DIR", home}, {"DISPLAY", std::nullopt}, {"WAYLAND_DISPLAY", std::nullopt},
        {"DBUS_SESSION_BUS_ADDRESS", std::nullopt}};
    environment.insert(environment.end(), extra.begin(), extra.end());
    return environment;
}

// Everything written to the weekday log files (log_*.txt) of an app folder.
inline std::string LogText(const wxString& appDir)
{
    wxArrayString files;
    if (wxDir::Exists(appDir))
        wxDir::GetAllFiles(appDir, &files, "log_*.txt", wxDIR_FILES);
    std::string text;
    for (const wxString& file : files)
        text += ReadFileBytes(file);
    return text;
}

inline std::string DataFile(const std::string& jobs, const std::string& triggers)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SCHEDULER>\n" + jobs + triggers + "</SCHEDULER>\n";
}

// An Interval trigger.
inline std::string IntervalTrigger(int tid, const std::string& condition)
{
    return " <TRIGGER><ID>" + std::to_string(tid) + "</ID><TYPE>2</TYPE><CONDITION>" + condition +
           "</CONDITION><PREVFIRE>0 0 0 1 1 * 1999</PREVFIRE><NEXTFIRE>0 0 0 1 1 * 1999</NEXTFIRE>"
           "<START>0 0 0 1 1 * 1999</START><END>59 59 23 31 12 * 2999</END></TRIGGER>\n";
}

inline std::string Job(int jid, int kind, const std::string& description, bool enabled, int interval,
                       const std::string& tids, const std::string& chained, const std::string& info)
{
    return " <JOB><ID>" + std::to_string(jid) + "</ID><TYPE>" + std::to_string(kind) + "</TYPE><DESC>" + description +
           "</DESC><ENABLE>" + (enabled ? "1" : "0") + "</ENABLE><JINTERVAL>" + std::to_string(interval) +
           "</JINTERVAL><TID>" + tids + "</TID><JID>" + chained + "</JID><INFO>" + info + "</INFO></JOB>\n";
}

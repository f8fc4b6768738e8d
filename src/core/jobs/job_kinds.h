#pragma once
// The 24 job kinds: each kind's number and its descriptor, the one place
// that says what a kind is (its name, whether it is announced before it
// runs, whether silent mode holds it back, the parameter fields the job
// dialog shows). What a kind does is its action, registered by the desktop
// layer (desktop/desktop_actions.cpp).

#include <cstdint>
#include <vector>

#include <wx/arrstr.h>
#include <wx/string.h>

enum JobType : std::uint32_t {
    NJobTypeReminder = 0,
    NJobTypeOpenUrl = 1,
    NJobTypeOpenFile = 2,
    NJobTypeOpenFolder = 3,
    NJobTypeBackupFolder = 4,
    NJobTypeExecDosCommand = 5,
    NJobTypeExecScriptFile = 6,
    NJobTypeAutoScreenshot = 7,
    NJobTypeRefreshUrl = 8,
    NJobTypeCloseApp = 9,
    NJobTypeSendUdpMsg = 10,
    NJobTypeSendTcpMsg = 11,
    NJobTypeWakeOnLan = 12,
    NJobTypeSendKey = 13,
    NJobTypeKeyTyping = 14,
    NJobTypeMouseClick = 15,
    NJobTypeLockWorkstation = 16,
    NJobTypeShutoffDisplay = 17,
    NJobTypeEmptyRecyclebin = 18,
    NJobTypeSuspend = 19,
    NJobTypeHibernates = 20,
    NJobTypeShutdown = 21,
    NJobTypeReboot = 22,
    NJobTypeLogoff = 23,
    NJobTypeCount = 24
};

// The translated display name of a kind; empty above 23.
wxString JobTypeName(std::uint32_t type);
// The same name in English, for log lines.
wxString JobTypeEnglishName(std::uint32_t type);

enum class JobFieldKind {
    Text,        // one line
    LongText,    // several lines (messages)
    FilePath,    // a file chooser
    FolderPath,  // a folder chooser
    Number,      // a whole number in [minValue, maxValue]
    YesNo,       // stored "1" / "0"
    KeyName,     // one name of the key table (empty allowed unless required)
    Choice       // one of `choices`; stored as its position or its label
};

// One parameter of a kind, as the job dialog edits it.
struct JobField {
    wxString label;  // the property label (translated), also used in messages
    JobFieldKind kind = JobFieldKind::Text;
    wxString defaultValue;
    bool required = true;     // an empty value is refused
    long minValue = 0;        // Number
    long maxValue = 0;        // Number
    wxArrayString choices;    // Choice
    bool storeIndex = false;  // Choice: stored as "0", "1", ... rather than the label
    wxString fileFilter;      // FilePath
};

struct JobKind {
    const char* name;        // English, the catalogue key (misspellings kept)
    bool warnBeforeRun;      // a notice comes before it runs
    bool heldInSilentMode;   // silent mode does not run it
    // The parameter fields in parameter order (translated labels).
    std::vector<JobField> (*fields)();
};

// The descriptor of a kind, or null above 23.
const JobKind* FindJobKind(std::uint32_t type);

// The parameter fields of a kind (none for 16 to 23 and unknown kinds).
std::vector<JobField> JobFieldsFor(std::uint32_t type);
// A new job's parameters of the kind.
std::vector<wxString> DefaultJobParams(std::uint32_t type);

#pragma once
// The job dialog's parameter fields per job kind, their defaults and their
// checks, as plain data: the dialog builds one page of controls per kind from
// this and refuses to save a job whose parameters could not run.

#include <cstdint>
#include <functional>
#include <vector>

#include <wx/arrstr.h>
#include <wx/string.h>

#include "core/jobs/job.h"

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

struct JobField {
    wxString label;  // the property label, also used in messages
    JobFieldKind kind = JobFieldKind::Text;
    wxString defaultValue;
    bool required = true;     // an empty value is refused
    long minValue = 0;        // Number
    long maxValue = 0;        // Number
    wxArrayString choices;    // Choice
    bool storeIndex = false;  // Choice: stored as "0", "1", ... rather than the label
    wxString fileFilter;      // FilePath
};

// The parameter fields of a kind, in parameter order (none for 16 to 23).
std::vector<JobField> JobFieldsFor(std::uint32_t kind);
// A new job's parameters of the kind.
ParamList DefaultJobParams(std::uint32_t kind);

// Checks parameters for the kind. False with `message` naming the field
// (its label) and what is wrong.
bool ValidateJobParams(std::uint32_t kind, const ParamList& params, wxString& message);

// The chain settings: the job interval in ms (0 to 9999) and the associated
// JIDs as typed ("3, 5"). `exists` tells whether a JID names a job; `self`
// is the edited job's JID (a job may not chain to itself: it would run for
// ever). On success `jids` holds the list.
bool ValidateChain(const wxString& intervalText, const wxString& jidsText, std::int32_t self,
                   const std::function<bool(std::int32_t)>& exists, std::int32_t& interval, IdList& jids,
                   wxString& message);

// The largest job interval the dialog accepts.
constexpr long kMaxJobIntervalMs = 9999;

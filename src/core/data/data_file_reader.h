#pragma once
// Reads the scheduler data file in one expat pass, building jobs and triggers
// as their elements end. The rules are the ones the file has always been read
// by: names without regard to case, an unknown element under the root ends the
// walk, a field's value is its first run of text. What the reader could not
// take as written is listed in plain words in `dropped`, so that nothing is
// lost without the user being told.

#include <cstddef>
#include <memory>
#include <vector>

#include <wx/arrstr.h>
#include <wx/string.h>

#include "core/jobs/job.h"
#include "core/triggers/trigger.h"

class SessionContext;

struct DataFileContent {
    bool wellFormed = false;  // expat read the whole file without error
    bool schedulerRoot = false;  // the root element is SCHEDULER
    wxString problem;         // why the file is not usable (empty when it is)
    std::vector<std::unique_ptr<Job>> jobs;
    std::vector<std::unique_ptr<Trigger>> triggers;
    wxArrayString dropped;    // one sentence per thing not loaded as written
    std::size_t skippedJobs = 0;      // unknown kinds
    std::size_t skippedTriggers = 0;  // unknown kinds
    std::size_t refused = 0;  // elements or values refused because a number did not fit
    bool stoppedAtUnknownElement = false;
};

// Deeper nesting than this is treated as a malformed file. The data file
// itself needs three levels.
constexpr int kMaxDataFileDepth = 64;

// Reads a whole file held in memory; triggers are made in `context`.
void ReadDataFileBytes(const char* data, std::size_t size, DataFileContent& out, const SessionContext& context);
// Reads the file at `path`; a missing or unreadable file is not well-formed.
// `exists` tells the two apart.
void ReadDataFile(const wxString& path, DataFileContent& out, const SessionContext& context,
                  bool* exists = nullptr);

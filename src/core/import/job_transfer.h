#pragma once
// Jobs carried between schedulers: an export file has the data file's own
// layout (the jobs, their triggers and chains); importing gives every job and
// trigger a JID and TID free in the receiving scheduler and keeps the chains
// between the imported jobs. See docs/AGENDA_AND_IMPORT.md.

#include <cstdint>
#include <string>
#include <vector>

#include <wx/arrstr.h>
#include <wx/string.h>

#include "core/scheduler.h"

// The export file's text for the jobs `jids` (all jobs when empty), or an
// empty text with `problem` naming a JID that no job has.
std::string ExportJobs(const Scheduler& scheduler, const std::vector<std::int32_t>& jids, wxString& problem);

struct JobImport {
    wxString problem;          // the file cannot be used (nothing is imported)
    wxArrayString notes;       // what of a usable file is left out, and why
    std::vector<JobEdit> edits;  // the jobs as the scheduler will store them
    std::vector<std::pair<std::int32_t, std::int32_t>> jidMap;  // JID in the file -> new JID
};

// Reads an export file and plans its jobs for `scheduler`: new JIDs and
// TIDs, chains to jobs outside the file left out (each named in `notes`).
// A file that does not read as written is refused with the reason (and its
// line where the reader knows it).
JobImport PlanJobImport(const std::string& bytes, const Scheduler& scheduler);

// Stores the planned jobs: each one a whole-job edit.
void ApplyJobImport(const JobImport& plan, Scheduler& scheduler);

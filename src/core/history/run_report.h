#pragma once
// How a job's action tells the history how its run went, without every one
// of the actions having to return something: the job thread opens a report
// around the action, and the action (on that thread) calls these when it
// has something to say. A run that says nothing succeeded. Outside a report
// (a test calling an action directly) the calls do nothing.

#include <string>

#include <wx/string.h>

#include "core/history/run_record.h"

struct RunReport {
    RunOutcome outcome = RunOutcome::Succeeded;
    std::string details;
    std::string output;
};

// Makes `report` the calling thread's report while the object lives.
class RunReportScope {
public:
    explicit RunReportScope(RunReport& report);
    ~RunReportScope();
    RunReportScope(const RunReportScope&) = delete;
    RunReportScope& operator=(const RunReportScope&) = delete;

private:
    RunReport* m_previous;
};

// What the run did ("Opened https://example.com with Firefox").
void ReportRunDetails(const wxString& details);
// Why it failed, in words the user understands; the first failure stays
// the reason, later ones are added on their own lines.
void ReportRunFailed(const wxString& reason);
// Output kept with the run.
void ReportRunOutput(std::string output);

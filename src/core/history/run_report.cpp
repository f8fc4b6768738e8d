#include "core/history/run_report.h"

namespace {
thread_local RunReport* t_report = nullptr;
}

RunReportScope::RunReportScope(RunReport& report) : m_previous(t_report)
{
    t_report = &report;
}

RunReportScope::~RunReportScope()
{
    t_report = m_previous;
}

void ReportRunDetails(const wxString& details)
{
    if (!t_report)
        return;
    if (!t_report->details.empty())
        t_report->details += "\n";
    t_report->details += details.utf8_string();
}

void ReportRunFailed(const wxString& reason)
{
    if (!t_report)
        return;
    if (t_report->outcome != RunOutcome::Failed) {
        t_report->outcome = RunOutcome::Failed;
        t_report->details.clear();  // what it did before it failed matters less than why
    }
    ReportRunDetails(reason);
}

void ReportRunOutput(std::string output)
{
    if (t_report)
        t_report->output = std::move(output);
}

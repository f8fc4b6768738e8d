#include "core/list_command.h"
#include "core/text_number.h"

#include <wx/filefn.h>
#include <wx/log.h>

#include "core/data/scheduler_data.h"
#include "core/history/history_command.h"
#include "core/history/history_db.h"
#include "core/scheduler.h"
#include "core/session/session_context.h"
#include "core/triggers/trigger_description.h"

namespace {

std::string FormatMoment(const wxDateTime& dt)
{
    return dt.IsValid() ? Utf8(dt.Format("%Y-%m-%d %H:%M:%S")) : std::string("-");
}

// A text as one cell of a tab-separated row: a tab, line break or backslash
// of its own cannot start a cell or a row of its own.
std::string Cell(const wxString& text)
{
    std::string cell;
    for (const char c : Utf8(text)) {
        switch (c) {
        case '\t': cell += "\\t"; break;
        case '\n': cell += "\\n"; break;
        case '\r': cell += "\\r"; break;
        case '\\': cell += "\\\\"; break;
        default: cell += c;
        }
    }
    return cell;
}

}  // namespace

int RunListCommand(const wxString& appDir, std::ostream& out, std::ostream& err)
{
    const SessionContext context;
    Scheduler scheduler(context, appDir);
    LoadForReport(scheduler, err);

    out << "Jobs: " << scheduler.Jobs().size() << "\n";
    // The last result of each job, when there is a history to read.
    std::map<std::int32_t, LastResult> last;
    if (wxFileExists(appDir + "/history.db")) {
        HistoryOpenResult history = OpenHistoryDb(Utf8(appDir + "/history.db"), true);
        if (history.db)
            last = QueryLastResults(history.db.get());
    }
    out << "JID\tKIND\tENABLED\tDESCRIPTION\tPARAMETERS\tTRIGGERS\tASSOCIATED\tLAST\n";
    for (const Scheduler::JobPtr& job : scheduler.Jobs()) {
        out << job->GetId() << '\t' << Cell(job->GetTypeName()) << '\t' << (job->IsEnabled() ? "yes" : "no") << '\t'
            << Cell(job->GetDescription()) << '\t' << Cell(job->GetParamText()) << '\t'
            << Utf8(JoinIdList(job->GetTriggerIds())) << '\t' << Utf8(JoinIdList(job->GetAssociatedJids())) << '\t'
            << LastResultText(last, job->GetId()) << "\n";
    }
    out << "Triggers: " << scheduler.Triggers().size() << "\n";
    out << "TID\tKIND\tSTATUS\tCONDITION\tPREVIOUS\tNEXT\tDESCRIPTION\n";
    for (const Scheduler::TriggerPtr& trigger : scheduler.Triggers()) {
        out << trigger->GetTid() << '\t' << Cell(TriggerTypeName(trigger->GetType())) << '\t'
            << Cell(TriggerStatusName(trigger->GetStatus())) << '\t' << Cell(trigger->GetCondition()) << '\t'
            << FormatMoment(trigger->GetPrevFire()) << '\t' << FormatMoment(trigger->GetNextFire()) << '\t'
            << Cell(DescribeTrigger(trigger->GetType(), trigger->GetCondition())) << "\n";
    }
    return 0;
}

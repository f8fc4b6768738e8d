#include "gui/frame/job_view_logic.h"

#include <algorithm>
#include <unordered_map>

#include "core/scheduler.h"

const std::vector<ListColumn>& JobColumns()
{
    static const std::vector<ListColumn> columns = {
        {wxTRANSLATE("JID"), "jColWidthJID"},
        {wxTRANSLATE("Type"), "jColWidthType"},
        {wxTRANSLATE("Description"), "jColWidthDesc"},
        {wxTRANSLATE("Information"), "jColWidthInfo"},
        {wxTRANSLATE("Related JID"), "jColWidthRJID"},
        {wxTRANSLATE("Next Run Time"), "jColWidthNextTime"},
        {wxTRANSLATE("Trigger ID"), "jColWidthTID"}};
    return columns;
}

const std::vector<ListColumn>& TriggerColumns()
{
    static const std::vector<ListColumn> columns = {
        {wxTRANSLATE("TID"), "tColWidthTID"},
        {wxTRANSLATE("JID"), "tColWidthJID"},
        {wxTRANSLATE("Type"), "tColWidthType"},
        {wxTRANSLATE("Status"), "tColWidthStatus"},
        {wxTRANSLATE("Prev Run Time"), "tColWidthPrevTime"},
        {wxTRANSLATE("Next Run Time"), "tColWidthNextTime"},
        {wxTRANSLATE("Start Time"), "tColWidthStartTime"},
        {wxTRANSLATE("End Time"), "tColWidthEndTime"},
        {wxTRANSLATE("Condition"), "tColWidthCondition"}};
    return columns;
}

wxString FormatListTime(const wxDateTime& moment)
{
    return moment.IsValid() ? moment.Format("%Y-%m-%d %H:%M:%S") : wxString();
}

wxString FormatTriggerListTime(const wxDateTime& moment, bool unset)
{
    return unset || !moment.IsValid() ? wxString(L"\u2014") : FormatListTime(moment);
}

namespace {

wxString JoinIds(const IdList& ids)
{
    wxString text;
    for (std::int32_t id : ids) {
        if (!text.empty())
            text += ",";
        text << id;
    }
    return text;
}

}  // namespace

wxString JobRow::Cell(int column) const
{
    switch (column) {
    case JColJID: return wxString::Format("%d", jid);
    case JColType: return typeName;
    case JColDesc: return description;
    case JColInfo: return info;
    case JColRJID: return relatedJids;
    case JColNextTime: return FormatListTime(nextRun);
    case JColTID: return tids;
    default: return wxString();
    }
}

std::vector<JobRow> BuildJobRows(const Scheduler& scheduler)
{
    std::vector<JobRow> rows;
    auto lock = scheduler.ReadLock();
    // One pass over the triggers and the kind names, not one per job: with
    // 10,000 of each, lookups by TID would otherwise cost seconds.
    std::unordered_map<std::int64_t, const Trigger*> triggers;
    triggers.reserve(scheduler.Triggers().size());
    for (const Scheduler::TriggerPtr& trigger : scheduler.Triggers())
        triggers.emplace(trigger->GetTid(), trigger.get());
    std::vector<wxString> typeNames(NJobTypeCount);
    rows.reserve(scheduler.Jobs().size());
    for (const Scheduler::JobPtr& job : scheduler.Jobs()) {
        JobRow row;
        row.jid = job->GetId();
        row.type = job->GetType();
        row.enabled = job->IsEnabled();
        if (row.type < NJobTypeCount && typeNames[row.type].empty())
            typeNames[row.type] = job->GetTypeName();
        row.typeName = row.type < NJobTypeCount ? typeNames[row.type] : job->GetTypeName();
        row.description = job->GetDescription();
        row.info = job->GetParamText();
        row.relatedJids = JoinIds(job->GetAssociatedJids());
        for (const auto tid : job->GetTriggerIds()) {
            const auto found = triggers.find(tid);
            if (found == triggers.end())
                continue;
            const Trigger* trigger = found->second;
            if (!row.tids.empty())
                row.tids += ",";
            row.tids << tid;
            if (row.firstTid < 0)
                row.firstTid = tid;
            if (trigger->GetType() < 32)
                row.triggerKinds |= 1u << trigger->GetType();
            const std::uint32_t status = trigger->GetStatus();
            const wxDateTime next = trigger->GetNextFire();
            if (status == NTriggerStatusTimeout || status == NTriggerStatusDisable || !next.IsValid())
                continue;
            if (!row.nextRun.IsValid() || next < row.nextRun)
                row.nextRun = next;
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

bool InCategory(const JobRow& row, const Category& category)
{
    if (category.grouping)
        return true;
    switch (category.kind) {
    case Category::Kind::All: return true;
    case Category::Kind::Status: return row.enabled == (category.value != 0);
    case Category::Kind::JobType: return row.type == category.value;
    case Category::Kind::TriggerType: return category.value < 32 && (row.triggerKinds >> category.value) & 1u;
    }
    return true;
}

bool MatchesFilter(const JobRow& row, const wxString& text)
{
    wxString needle = text;
    needle.Trim(true).Trim(false);
    if (needle.empty())
        return true;
    needle.MakeLower();
    return row.description.Lower().Contains(needle) || row.info.Lower().Contains(needle) ||
           wxString::Format("%d", row.jid).StartsWith(needle);
}

void NextSortState(int clicked, int& column, long& dir)
{
    if (clicked == column && dir == kSortAscending)
        dir = kSortDescending;
    else
        dir = kSortAscending;
    column = clicked;
}

namespace {

// Negative, zero or positive as `a` goes before, with or after `b` ascending.
int CompareRows(const JobRow& a, const JobRow& b, int column)
{
    switch (column) {
    case JColJID: return (a.jid > b.jid) - (a.jid < b.jid);
    case JColTID: return (a.firstTid > b.firstTid) - (a.firstTid < b.firstTid);
    case JColNextTime:
        // Jobs that will not run go last.
        if (a.nextRun.IsValid() != b.nextRun.IsValid())
            return a.nextRun.IsValid() ? -1 : 1;
        if (!a.nextRun.IsValid())
            return 0;
        return a.nextRun < b.nextRun ? -1 : (b.nextRun < a.nextRun ? 1 : 0);
    case JColType: return a.typeName.CmpNoCase(b.typeName);
    case JColDesc: return a.description.CmpNoCase(b.description);
    case JColInfo: return a.info.CmpNoCase(b.info);
    case JColRJID: return a.relatedJids.CmpNoCase(b.relatedJids);
    default: return 0;
    }
}

}  // namespace

std::vector<std::size_t> VisibleJobOrder(const std::vector<JobRow>& rows, const Category& category,
                                         const wxString& filter, int column, long dir)
{
    std::vector<std::size_t> order;
    order.reserve(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (InCategory(rows[i], category) && MatchesFilter(rows[i], filter))
            order.push_back(i);
    if ((dir != kSortAscending && dir != kSortDescending) || column < 0 || column >= JColCount)
        return order;
    const bool descending = dir == kSortDescending;
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        const int c = CompareRows(rows[a], rows[b], column);
        return descending ? c > 0 : c < 0;
    });
    return order;
}

void ShareTriggers(const std::vector<std::int64_t>& tids, std::size_t threads, Counters& counters)
{
    counters.threads = threads;
    counters.minShare = counters.maxShare = 0;
    if (threads == 0)
        return;
    std::vector<std::size_t> shares(threads, 0);
    for (std::int64_t tid : tids)
        ++shares[static_cast<std::size_t>(tid < 0 ? -tid : tid) % threads];
    const auto [lo, hi] = std::minmax_element(shares.begin(), shares.end());
    counters.minShare = *lo;
    counters.maxShare = *hi;
}

wxString CountersText(const Counters& c)
{
    return wxString::Format(_("JobCount: %zu|%zu, TriggerCount: %zu|%zu, ThreadCount: %zu, Triggers/Thread: %zu|%zu|%zu"),
                            c.jobs, c.enabledJobs, c.triggers, c.activeTriggers, c.threads, c.minShare,
                            c.maxShare, c.lastPass);
}

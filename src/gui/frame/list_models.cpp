#include "gui/frame/list_models.h"

#include "core/scheduler.h"
#include "core/triggers/trigger_description.h"

bool JobListModel::SetRows(std::vector<JobRow> rows, std::vector<std::size_t> order)
{
    m_rows = std::move(rows);
    return SetOrder(std::move(order));
}

bool JobListModel::SetOrder(std::vector<std::size_t> order)
{
    const bool sameCount = order.size() == m_order.size();
    m_order = std::move(order);
    // Same number of rows: the view only repaints what it shows.
    if (!sameCount)
        Reset(static_cast<unsigned>(m_order.size()));
    return sameCount;
}

const JobRow* JobListModel::RowAt(unsigned row) const
{
    return row < m_order.size() ? &m_rows[m_order[row]] : nullptr;
}

int JobListModel::RowOf(std::int32_t jid) const
{
    for (std::size_t i = 0; i < m_order.size(); ++i)
        if (m_rows[m_order[i]].jid == jid)
            return static_cast<int>(i);
    return -1;
}

void JobListModel::GetValueByRow(wxVariant& value, unsigned row, unsigned col) const
{
    const JobRow* job = RowAt(row);
    value = job ? job->Cell(static_cast<int>(col)) : wxString();
}

bool JobListModel::GetAttrByRow(unsigned row, unsigned, wxDataViewItemAttr& attr) const
{
    // Disabled jobs are greyed so that the state shows without a column.
    const JobRow* job = RowAt(row);
    if (!job || job->enabled)
        return false;
    attr.SetColour(*wxLIGHT_GREY);
    attr.SetItalic(true);
    return true;
}

int TriggerListModel::RowOf(std::int64_t tid) const
{
    auto lock = m_scheduler.ReadLock();
    const auto& triggers = m_scheduler.Triggers();
    for (std::size_t i = 0; i < triggers.size(); ++i)
        if (triggers[i]->GetTid() == tid)
            return static_cast<int>(i);
    return -1;
}

std::int64_t TriggerListModel::TidAt(unsigned row) const
{
    auto lock = m_scheduler.ReadLock();
    const auto& triggers = m_scheduler.Triggers();
    return row < triggers.size() ? triggers[row]->GetTid() : -1;
}

void TriggerListModel::GetValueByRow(wxVariant& value, unsigned row, unsigned col) const
{
    auto lock = m_scheduler.ReadLock();
    const auto& triggers = m_scheduler.Triggers();
    if (row >= triggers.size()) {
        value = wxString();
        return;
    }
    const Trigger& t = *triggers[row];
    switch (col) {
    case 0: value = wxString::Format("%lld", static_cast<long long>(t.GetTid())); break;
    // The owning job, so that two copies of one trigger can be told apart.
    case 1: {
        const auto& owner = m_scheduler.GetTriggerOwner(t.GetTid());
        value = owner ? wxString::Format("%d", owner->GetId()) : wxString(L"\u2014");
        break;
    }
    case 2: value = wxGetTranslation(TriggerTypeName(t.GetType())); break;
    case 3: value = wxGetTranslation(TriggerStatusName(t.GetStatus())); break;
    // Times that only stand for "none" (never fired, no start, no end; the
    // data file keeps them as 1999 and 2999) show a dash.
    case 4: value = FormatTriggerListTime(t.GetPrevFire(), IsInYear1999(t.GetPrevFire())); break;
    case 5: value = FormatListTime(t.GetNextFire()); break;
    case 6: value = FormatTriggerListTime(t.GetStart(), !IsAfter1999(t.GetStart())); break;
    case 7: value = FormatTriggerListTime(t.GetEnd(), t.GetEnd().IsValid() && t.GetEnd().GetYear() >= 2999); break;
    default: value = DescribeTrigger(t.GetType(), t.GetCondition()); break;
    }
}

wxString TriggerListModel::ConditionAt(unsigned row) const
{
    auto lock = m_scheduler.ReadLock();
    const auto& triggers = m_scheduler.Triggers();
    return row < triggers.size() ? triggers[row]->GetCondition() : wxString();
}

#pragma once
// The job and trigger lists' virtual models: rows are produced when the view
// asks for them, so 10,000 jobs cost one vector of rows, not 10,000 items.

#include <cstdint>
#include <vector>

#include <wx/dataview.h>

#include "gui/frame/job_view_logic.h"

class Scheduler;

class JobListModel final : public wxDataViewVirtualListModel {
public:
    // Takes the rows of all jobs and the visible order (indices into them).
    // True when as many rows are visible as before: the view keeps its items
    // and only needs a repaint; false after a reset.
    bool SetRows(std::vector<JobRow> rows, std::vector<std::size_t> order);
    // A new visible order of the rows held; returns as SetRows.
    bool SetOrder(std::vector<std::size_t> order);
    const std::vector<JobRow>& AllRows() const { return m_rows; }
    // The job of visible row `row`, or null.
    const JobRow* RowAt(unsigned row) const;
    // The visible row of job `jid`, or -1.
    int RowOf(std::int32_t jid) const;

    unsigned GetColumnCount() const override { return JColCount; }
    wxString GetColumnType(unsigned) const override { return "string"; }
    void GetValueByRow(wxVariant& value, unsigned row, unsigned col) const override;
    bool GetAttrByRow(unsigned row, unsigned col, wxDataViewItemAttr& attr) const override;
    bool SetValueByRow(const wxVariant&, unsigned, unsigned) override { return false; }

private:
    std::vector<JobRow> m_rows;
    std::vector<std::size_t> m_order;
};

// Reads the scheduler's trigger list directly, under its read lock.
class TriggerListModel final : public wxDataViewVirtualListModel {
public:
    explicit TriggerListModel(const Scheduler& scheduler) : m_scheduler(scheduler) {}
    // The row of trigger `tid`, or -1.
    int RowOf(std::int64_t tid) const;
    std::int64_t TidAt(unsigned row) const;
    // The CONDITION of row `row` as stored (the column shows it in words).
    wxString ConditionAt(unsigned row) const;

    unsigned GetColumnCount() const override { return static_cast<unsigned>(TriggerColumns().size()); }
    wxString GetColumnType(unsigned) const override { return "string"; }
    void GetValueByRow(wxVariant& value, unsigned row, unsigned col) const override;
    bool SetValueByRow(const wxVariant&, unsigned, unsigned) override { return false; }

private:
    const Scheduler& m_scheduler;
};

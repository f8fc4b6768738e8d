#pragma once
// The job, its editable record JobParam, the 24 kinds and the single-line
// parameter text (INFO) of the data file. One class serves every kind: what a
// kind does is its action (job_actions.h), what it is its descriptor
// (job_kinds.h).

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include <wx/string.h>

#include "core/jobs/job_kinds.h"

// The translated display name of a kind; empty above 23.
wxString JobTypeName(std::uint32_t type);
// The same name in English, for log lines.
wxString JobTypeEnglishName(std::uint32_t type);

using IdList = std::vector<std::int32_t>;
// Trigger ids are 64-bit wherever they are kept.
using TidList = std::vector<std::int64_t>;
using ParamList = std::vector<wxString>;

// The editable value form of a job.
struct JobParam {
    std::int32_t id = 0;
    std::uint32_t type = 0;
    wxString description;
    bool enable = true;
    IdList associatedJids;
    std::int32_t jobInterval = 0;
    ParamList params;
    TidList triggerIds;
};

class Job {
public:
    explicit Job(std::uint32_t type) : m_nType(type) {}
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    // The translated name of the job's kind.
    wxString GetTypeName() const;

    void SetParam(const JobParam& param);
    void GetParam(JobParam& param) const;
    // The params joined as stored in INFO.
    wxString GetParamText() const;
    // Description, " | ", parameter text: what the execution log shows.
    wxString GetSummary() const;

    std::int32_t GetId() const { return m_nId; }
    void SetId(std::int32_t id) { m_nId = id; }
    std::uint32_t GetType() const { return m_nType; }
    const wxString& GetDescription() const { return m_strDescription; }
    void SetDescription(const wxString& text) { m_strDescription = text; }
    // Read by checker threads while the main thread may change it.
    bool IsEnabled() const { return m_bEnable.load(std::memory_order_relaxed); }
    void SetEnable(bool enable) { m_bEnable.store(enable, std::memory_order_relaxed); }
    std::int32_t GetJobInterval() const { return m_nJobInterval; }
    const ParamList& GetParams() const { return m_params; }
    // The parameter at `index`, or an empty text when the list is shorter.
    wxString GetParamAt(std::size_t index) const;
    const TidList& GetTriggerIds() const { return m_triggerIds; }
    TidList& TriggerIds() { return m_triggerIds; }
    const IdList& GetAssociatedJids() const { return m_associatedJids; }
    bool IsWarnBeforeRun() const { return m_bWarnBeforeRun.load(std::memory_order_relaxed); }
    void SetWarnBeforeRun(bool warn) { m_bWarnBeforeRun.store(warn, std::memory_order_relaxed); }

private:
    std::int32_t m_nId = 0;
    std::uint32_t m_nType;
    wxString m_strDescription;
    std::atomic<bool> m_bEnable{true};
    std::int32_t m_nJobInterval = 0;
    ParamList m_params;
    TidList m_triggerIds;
    IdList m_associatedJids;
    std::atomic<bool> m_bWarnBeforeRun{false};
};

// INFO: the first parameter as it is, each further one after " $ ".
wxString JoinJobParams(const ParamList& params);
// Cut at every "$", trim each piece, drop the empty ones. Lossy on purpose:
// an empty parameter vanishes and a "$" inside a parameter splits it.
ParamList SplitJobParams(const wxString& info);
// Id lists: decimals joined with ",".
wxString JoinIdList(const IdList& ids);
wxString JoinIdList(const TidList& ids);
// Split at ",", each piece trimmed and read as base 10; empty pieces dropped.
IdList SplitIdList(const wxString& text);

// A new job of the kind with construction values (warn-before-run as the
// kind's descriptor says), or null above 23.
std::unique_ptr<Job> CreateJob(std::uint32_t type);
// A copy of the job: same kind and values, not owned by any scheduler.
std::unique_ptr<Job> CopyJob(const Job& job);

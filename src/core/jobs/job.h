#pragma once
// The job base class, its editable record JobParam, the 24 kinds and the
// single-line parameter text (INFO) of the data file.

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include <wx/string.h>

enum JobType : std::uint32_t {
    NJobTypeReminder = 0,
    NJobTypeOpenUrl = 1,
    NJobTypeOpenFile = 2,
    NJobTypeOpenFolder = 3,
    NJobTypeBackupFolder = 4,
    NJobTypeExecDosCommand = 5,
    NJobTypeExecScriptFile = 6,
    NJobTypeAutoScreenshot = 7,
    NJobTypeRefreshUrl = 8,
    NJobTypeCloseApp = 9,
    NJobTypeSendUdpMsg = 10,
    NJobTypeSendTcpMsg = 11,
    NJobTypeWakeOnLan = 12,
    NJobTypeSendKey = 13,
    NJobTypeKeyTyping = 14,
    NJobTypeMouseClick = 15,
    NJobTypeLockWorkstation = 16,
    NJobTypeShutoffDisplay = 17,
    NJobTypeEmptyRecyclebin = 18,
    NJobTypeSuspend = 19,
    NJobTypeHibernates = 20,
    NJobTypeShutdown = 21,
    NJobTypeReboot = 22,
    NJobTypeLogoff = 23,
    NJobTypeCount = 24
};

// The translated display name of a kind; empty above 23.
wxString JobTypeName(std::uint32_t type);
// The same name in English, for log lines.
wxString JobTypeEnglishName(std::uint32_t type);

using IdList = std::vector<std::int32_t>;
// Trigger ids are 64-bit wherever they are kept.
using TidList = std::vector<std::int64_t>;
using ParamList = std::vector<wxString>;

// The editable value form of a job.
class JobParam {
public:
    virtual ~JobParam() = default;

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
    virtual ~Job() = default;
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    virtual wxString GetTypeName() const;
    // Runs the action synchronously on the calling thread.
    virtual void Execute() = 0;

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
    bool IsChanged() const { return m_bChanged; }
    void SetChanged(bool changed) { m_bChanged = changed; }
    bool IsRunning() const { return m_bRunning; }
    void SetRunning(bool running) { m_bRunning = running; }
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
    bool m_bChanged = false;
    bool m_bRunning = false;
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

// A new job of the kind with construction values, or null above 23. Close App
// and the session and power kinds (16 to 23) are announced before they run.
std::unique_ptr<Job> CreateJob(std::uint32_t type);

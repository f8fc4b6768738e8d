#pragma once
// The abstract base of the twelve trigger kinds, its flat record
// TriggerParam, and the status names. Every time a kind reads is taken from
// the clock of the session it belongs to.

#include <atomic>
#include <cstdint>
#include <memory>

#include <wx/datetime.h>
#include <wx/string.h>

#include "core/triggers/trigger_kinds.h"
#include "core/triggers/trigger_time.h"

class SessionContext;

enum TriggerStatus : std::uint32_t {
    NTriggerStatusWaitStart = 0,
    NTriggerStatusWaiting = 1,
    NTriggerStatusFired = 2,
    NTriggerStatusTimeout = 3,
    NTriggerStatusDisable = 4,
    NTriggerStatusEditing = 5,
    NTriggerStatusInvalid = 6,  // a recurring kind whose CONDITION does not parse
    NTriggerStatusNoIdleTime = 7,  // Idle Timeout where the session tells no idle time (no display)
    NTriggerStatusCount = 8
};

// Display name of a status; empty above 7.
wxString TriggerStatusName(std::uint32_t status);

// The flat form of a trigger, through which it is loaded, saved and copied.
// Date-times travel as date-time text (see datetime_text.h).
struct TriggerParam {
    std::int64_t tid = -1;
    std::uint32_t type = 0;
    bool enable = true;
    bool editing = false;
    bool finished = false;
    bool firePending = false;
    bool noticeGiven = false;
    wxString condition;
    wxString prevFire;
    wxString nextFire;
    wxString start;
    wxString end;
};

class Trigger {
public:
    // `context` (the session's clock, settings, idle time and start time)
    // must outlive the trigger.
    Trigger(std::uint32_t type, const SessionContext& context);
    virtual ~Trigger() = default;
    Trigger(const Trigger&) = delete;
    Trigger& operator=(const Trigger&) = delete;
    // Takes the common fields; kinds also parse CONDITION and compute the
    // next fire time.
    virtual void Load(const TriggerParam& param);
    // Fills the record from the fields (dates as date-time text).
    virtual void MakeParam(TriggerParam& param) const;
    // Updates the status, decides whether to fire now and advances the fire
    // times; true means fire now. Called by one checker thread only.
    virtual bool CheckAndAdvance() = 0;
    // True when the next fire time lies within `toleranceSec` ahead of now.
    virtual bool IsDue(int toleranceSec) const;
    // Called right after a check at `nowMs`: the earliest moment at which a
    // check could change anything (fire, status, times, the advance notice
    // `noticeSec` ahead). A value not after `nowMs` means the next pass;
    // kNeverMs means only an edit can. The checker sleeps until then.
    virtual std::int64_t NextCheckMs(std::int64_t nowMs, int noticeSec) const;
    static constexpr std::int64_t kNeverMs = INT64_MAX;
    // The condition as the dialog and the data file see it.
    virtual wxString GetCondition() const { return m_strCondition; }
    // Arms a trigger that counts from the program's start (With Start) again,
    // from `from`; false for every other kind. Under the edit lock.
    virtual bool ArmFromStart(const wxDateTime& /*from*/) { return false; }

    std::int64_t GetTid() const { return m_nTid; }
    void SetTid(std::int64_t tid) { m_nTid = tid; }
    std::uint32_t GetType() const { return m_nType; }
    void SetCondition(const wxString& condition)
    {
        m_strCondition = condition;
        ++m_nConditionVersion;
    }

    bool IsEnabled() const { return m_bEnable.load(std::memory_order_relaxed); }
    void SetEnable(bool enable) { m_bEnable.store(enable, std::memory_order_relaxed); }
    bool IsEditing() const { return m_bEditing.load(std::memory_order_relaxed); }
    void SetEditing(bool editing) { m_bEditing.store(editing, std::memory_order_relaxed); }
    bool IsFinished() const { return m_bFinished.load(std::memory_order_relaxed); }
    void SetFinished(bool finished) { m_bFinished.store(finished, std::memory_order_relaxed); }
    bool IsFirePending() const { return m_bFirePending; }
    void SetFirePending(bool pending) { m_bFirePending = pending; }
    bool IsNoticeGiven() const { return m_bNoticeGiven.load(std::memory_order_relaxed); }
    void SetNoticeGiven(bool given) { m_bNoticeGiven.store(given, std::memory_order_relaxed); }
    // "Invalid" while the CONDITION of a recurring kind does not parse,
    // whatever the other rules set (only "Editing" shows through).
    std::uint32_t GetStatus() const
    {
        const std::uint32_t status = m_nStatus.load(std::memory_order_relaxed);
        return m_bConditionInvalid.load(std::memory_order_relaxed) && status != NTriggerStatusEditing
                   ? static_cast<std::uint32_t>(NTriggerStatusInvalid)
                   : status;
    }
    void SetStatus(std::uint32_t status)
    {
        // Checked twenty times a second: do not dirty the line needlessly.
        if (m_nStatus.load(std::memory_order_relaxed) != status)
            m_nStatus.store(status, std::memory_order_relaxed);
    }

    // Times are returned by value: a checker thread may be changing them.
    wxDateTime GetPrevFire() const { return m_dtPrevFire.Get(); }
    void SetPrevFire(const wxDateTime& dt) { m_dtPrevFire = dt; }
    // The next fire time as saved in the data file (miss-fire detection).
    wxDateTime GetRecordedNextFire() const { return m_dtRecordedNextFire.Get(); }
    // The working next fire time computed by the kind.
    wxDateTime GetNextFire() const { return m_dtNextFire.Get(); }
    void SetNextFire(const wxDateTime& dt) { m_dtNextFire = dt; }
    wxDateTime GetStart() const { return m_dtStart.Get(); }
    void SetStart(const wxDateTime& dt) { m_dtStart = dt; }
    wxDateTime GetEnd() const { return m_dtEnd.Get(); }
    void SetEnd(const wxDateTime& dt) { m_dtEnd = dt; }

    // The session the trigger belongs to.
    const SessionContext& Context() const { return m_context; }

protected:
    std::int64_t NowMs() const;

    // Copies TID, flags, CONDITION and the four dates of the record.
    void LoadCommon(const TriggerParam& param);
    // The one-shot rule of Special Time, Count Down and With Start; the
    // first two may also make up a firing missed while the program was not
    // running.
    bool CheckOneShot(bool mayRefireMissed);
    // Whether the next fire time lies within `toleranceSec` ahead of now.
    bool NextFireWithin(int toleranceSec) const;
    // Changes whenever CONDITION may have changed, so kinds can cache what
    // they derive from it.
    unsigned ConditionVersion() const { return m_nConditionVersion; }

    AtomicMoment m_dtPrevFire;
    AtomicMoment m_dtRecordedNextFire;
    AtomicMoment m_dtNextFire;
    AtomicMoment m_dtStart;
    AtomicMoment m_dtEnd;
    std::int64_t m_nTid = -1;
    std::uint32_t m_nType;
    wxString m_strCondition;
    std::atomic<bool> m_bEnable{true};
    std::atomic<bool> m_bEditing{false};
    std::atomic<bool> m_bFinished{false};
    std::atomic<bool> m_bFirePending{false};
    std::atomic<bool> m_bNoticeGiven{false};
    std::atomic<std::uint32_t> m_nStatus{NTriggerStatusWaiting};
    std::atomic<bool> m_bConditionInvalid{false};

private:
    const SessionContext& m_context;
    unsigned m_nConditionVersion = 0;
};

// A new trigger of the kind in `context`, or null above 11.
std::unique_ptr<Trigger> CreateTrigger(std::uint32_t type, const SessionContext& context);
// A new trigger of the source's kind (and session) loaded from its record.
std::unique_ptr<Trigger> CopyTrigger(const Trigger& source);

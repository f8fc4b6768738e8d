#pragma once
// One checker thread's share of the triggers, ordered by the moment each
// could next change: a pass checks only what is due, so a rest costs what
// is due, not what exists. What a check does is exactly the full pass's
// (trigger_checker.h); only when it happens differs, and only for triggers
// that a check would leave as they are.
//
// The share is rebuilt (every trigger checked once at the next pass) when
// the lists or a trigger's settings were edited (the scheduler's edit
// generation moved), when the clock stepped back, and when the set starts.

#include <cstddef>
#include <cstdint>
#include <queue>
#include <vector>

class Scheduler;
class Trigger;
class TriggerCheckSink;

class CheckerIndex {
public:
    CheckerIndex(std::size_t count, std::size_t index) : m_count(count), m_index(index) {}

    // One pass at the clock's current moment, under the scheduler's read
    // lock; returns the moment of the next due check (Trigger::kNeverMs
    // when nothing is due; a value not after now means the next pass).
    std::int64_t Pass(Scheduler& scheduler, TriggerCheckSink& sink);

    // How many triggers the share holds and how many the last pass checked.
    std::size_t Size() const { return m_nextPass.size() + m_due.size(); }
    std::size_t LastChecked() const { return m_lastChecked; }

private:
    struct Entry {
        std::int64_t dueMs;
        Trigger* trigger;
        bool operator>(const Entry& other) const { return dueMs > other.dueMs; }
    };

    void Rebuild(Scheduler& scheduler);
    void File(Trigger* trigger, std::int64_t dueMs, std::int64_t nowMs);

    std::size_t m_count;
    std::size_t m_index;
    bool m_bBuilt = false;
    std::uint64_t m_generation = 0;
    std::int64_t m_lastNowMs = 0;
    std::size_t m_lastChecked = 0;
    // Checked at the next pass, whenever it comes (the old cadence).
    std::vector<Trigger*> m_nextPass;
    std::vector<Trigger*> m_checking;  // this pass's, kept for its capacity
    std::priority_queue<Entry, std::vector<Entry>, std::greater<Entry>> m_due;
};

#include "core/engine/checker_index.h"

#include "core/engine/trigger_checker.h"
#include "core/scheduler.h"
#include "core/session/session_context.h"

void CheckerIndex::Rebuild(Scheduler& scheduler)
{
    m_nextPass.clear();
    m_due = decltype(m_due)();
    const auto& tids = scheduler.TriggerTids();
    const auto& triggers = scheduler.Triggers();
    for (std::size_t i = 0; i < tids.size(); ++i) {
        if (static_cast<std::uint64_t>(tids[i]) % m_count != m_index)
            continue;
        Trigger* trigger = triggers[i].get();
        // Disabled and finished triggers come back only through an edit.
        if (trigger->IsEnabled() && !trigger->IsFinished())
            m_nextPass.push_back(trigger);
    }
    m_generation = scheduler.EditGeneration();
    m_bBuilt = true;
}

void CheckerIndex::File(Trigger* trigger, std::int64_t dueMs, std::int64_t nowMs)
{
    if (dueMs == Trigger::kNeverMs)
        return;
    if (dueMs <= nowMs)
        m_nextPass.push_back(trigger);
    else
        m_due.push({dueMs, trigger});
}

std::int64_t CheckerIndex::Pass(Scheduler& scheduler, TriggerCheckSink& sink)
{
    auto lock = scheduler.ReadLock();
    const ClockPassScope pass(scheduler.Context().GetClock());
    const std::int64_t now = scheduler.Context().GetClock().NowMs();
    // Due moments are absolute: a clock set back would leave them far ahead.
    if (!m_bBuilt || scheduler.EditGeneration() != m_generation || now < m_lastNowMs)
        Rebuild(scheduler);
    m_lastNowMs = now;

    // Two lists swapped at each pass: no allocation at 20 passes a second.
    m_checking.clear();
    m_checking.swap(m_nextPass);
    while (!m_due.empty() && m_due.top().dueMs <= now) {
        m_checking.push_back(m_due.top().trigger);
        m_due.pop();
    }
    m_lastChecked = m_checking.size();
    for (Trigger* trigger : m_checking) {
        if (!trigger->IsEnabled() || trigger->IsFinished())
            continue;
        // Open in a dialog: not checked, but looked at again at every pass,
        // since closing the dialog is no edit of the lists.
        if (trigger->IsEditing()) {
            m_nextPass.push_back(trigger);
            continue;
        }
        CheckTrigger(scheduler, *trigger, sink);
        if (!trigger->IsFinished())
            File(trigger, trigger->NextCheckMs(now, kNoticeSeconds), now);
    }
    if (!m_nextPass.empty())
        return now;
    return m_due.empty() ? Trigger::kNeverMs : m_due.top().dueMs;
}

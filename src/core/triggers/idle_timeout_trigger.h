#pragma once
// Fires when the user has been idle for exactly the chosen time: once per
// idle period, not again while the idle period goes on.

#include "core/triggers/trigger.h"

class IdleTimeoutTrigger : public Trigger {
public:
    enum Unit { UnitSeconds = 0, UnitMinutes = 1, UnitHours = 2 };

    explicit IdleTimeoutTrigger(const SessionContext& context) : Trigger(NTriggerTypeIdleTimeout, context) {}
    // CONDITION: "N - - - - -" (seconds), "- N - - - -" (minutes) or
    // "- - N - - -" (hours).
    void Load(const TriggerParam& param) override;
    bool CheckAndAdvance() override;
    // Never due by time: it fires through the check only.
    bool IsDue(int toleranceSec) const override;
    // Idle time is sampled at every pass: its rule counts checks.
    std::int64_t NextCheckMs(std::int64_t nowMs, int) const override { return nowMs; }
    wxString GetCondition() const override;

    int GetUnit() const { return m_nUnit; }
    int GetAmount() const { return m_nAmount; }

    // After a firing the trigger stays quiet for this many checks.
    static constexpr int kQuietChecks = 22;

private:
    int m_nUnit = UnitMinutes;
    int m_nAmount = -1;
    // Only the one checker thread of this trigger touches these.
    int m_nAfterFire = 0;  // 0 when armed
    long m_nIdleSeconds = 0;
};

#pragma once
// The kinds that fire once: Special Time (a fixed moment), Count Down (a
// moment set when the dialog was confirmed) and With Start (a delay after the
// program started).

#include "core/triggers/trigger.h"

class SpecTimeTrigger : public Trigger {
public:
    explicit SpecTimeTrigger(const SessionContext& context) : Trigger(NTriggerTypeSpecTime, context) {}
    // CONDITION is a date-time text: the moment to fire.
    void Load(const TriggerParam& param) override;
    bool CheckAndAdvance() override { return CheckOneShot(true); }
};

// A count-down: the days, hours, minutes and seconds the user chose.
struct TriggerDuration {
    int days = 0;
    int hours = 0;
    int minutes = 0;
    int seconds = 0;

    bool IsZero() const { return days == 0 && hours == 0 && minutes == 0 && seconds == 0; }
    // `from` plus the days as a calendar span plus the rest in milliseconds.
    wxDateTime AddTo(const wxDateTime& from) const;
};

class CountDownTrigger : public Trigger {
public:
    explicit CountDownTrigger(const SessionContext& context) : Trigger(NTriggerTypeCountDown, context) {}
    // CONDITION: second minute hour day month year of the target moment, then
    // days hours minutes seconds of the duration (ten numbers; no weekday).
    void Load(const TriggerParam& param) override;
    bool CheckAndAdvance() override { return CheckOneShot(true); }
    // Rebuilt from the target moment and the duration.
    wxString GetCondition() const override;
    const TriggerDuration& Duration() const { return m_duration; }

private:
    TriggerDuration m_duration;
};

class WithStartTrigger : public Trigger {
public:
    explicit WithStartTrigger(const SessionContext& context) : Trigger(NTriggerTypeWithStart, context) {}
    // CONDITION: "days hours minutes seconds - -" after the program's start.
    void Load(const TriggerParam& param) override;
    bool CheckAndAdvance() override { return CheckOneShot(false); }
    wxString GetCondition() const override;
    // Arms the trigger again: the moment counts from `from`.
    bool ArmFromStart(const wxDateTime& from) override;
    const TriggerDuration& Duration() const { return m_duration; }

private:
    TriggerDuration m_duration;
};

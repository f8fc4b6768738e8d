#pragma once
// The twelve trigger kinds: each kind's number and its descriptor, the one
// place that says what a kind is (its name, whether its CONDITION is a cron
// expression, how it is made). How a kind fires is its class
// (one_shot_triggers.*, cron_driven_trigger.*, idle_timeout_trigger.*); how
// the trigger dialog builds its CONDITION is gui/logic/trigger_form.*.

#include <cstddef>
#include <cstdint>
#include <memory>

#include <wx/string.h>

class SessionContext;
class Trigger;

enum TriggerType : std::uint32_t {
    NTriggerTypeCountDown = 0,
    NTriggerTypeWithStart = 1,
    NTriggerTypeInterval = 2,
    NTriggerTypeIdleTimeout = 3,
    NTriggerTypeSpecTime = 4,
    NTriggerTypeEveryMinute = 5,
    NTriggerTypeEveryHour = 6,
    NTriggerTypeEveryDay = 7,
    NTriggerTypeEveryWeek = 8,
    NTriggerTypeEveryMonth = 9,
    NTriggerTypeEveryYear = 10,
    NTriggerTypeCron = 11,
    NTriggerTypeCount = 12
};

struct TriggerKind {
    const char* name;  // English, the catalogue key ("Specical Time" is spelt so on purpose)
    bool cronDriven;   // CONDITION is a six-field cron expression
    // How many leading CONDITION numbers must fit 32 bits (0: not checked).
    std::size_t int32ConditionNumbers;
    std::unique_ptr<Trigger> (*make)(std::uint32_t type, const SessionContext& context);
};

// The descriptor of a kind, or null above 11.
const TriggerKind* FindTriggerKind(std::uint32_t type);
// Display name of a kind; empty above 11.
wxString TriggerTypeName(std::uint32_t type);
// True for the kinds whose condition is a cron expression (2 and 5 to 11).
bool IsCronDrivenType(std::uint32_t type);

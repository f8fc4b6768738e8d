#pragma once
// The trigger dialog: creates and edits one trigger.

#include <cstdint>

class Scheduler;
class wxWindow;

// Edits trigger `tid` modally. True when the user confirmed a change, which
// has then been applied through the scheduler (under its edit lock) and the
// data marked changed; false when cancelled or nothing was changed.
bool ShowTriggerDlgForTrigger(wxWindow* parent, Scheduler& scheduler, std::int64_t tid);

#pragma once

class JobActions;
// Kind 0 "Reminder": parameter 0 is the message, parameter 1 the important
// flag. An important reminder stays on screen until the user closes it; any
// other becomes a desktop notification that goes away by itself, or, where
// the session has no notification service, a window after all, so that no
// reminder is lost.

void RegisterReminderJobAction(JobActions& actions);

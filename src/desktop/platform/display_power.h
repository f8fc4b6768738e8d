#pragma once
// Switching the monitors off (they come back on with the next input).

#include "desktop/platform/session_control.h"

// Fails with a reason that names what the session lacks (no display, no
// power management on the display server).
SystemOutcome SwitchDisplayOff();

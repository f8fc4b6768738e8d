#pragma once
// `cadrelle --status` and friends: sends one request to the running instance
// of this user and prints its answer. Returns the exit status.

#include <iosfwd>

#include "desktop/control/control_protocol.h"

int RunControlClient(const ControlRequest& request, std::ostream& out, std::ostream& err);
// The same without printing; true when an instance answered with status 0.
bool SendControlRequestQuietly(const ControlRequest& request);

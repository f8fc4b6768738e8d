#pragma once
// The ways a desktop session ends a program besides its close button:
// SIGTERM, SIGINT and SIGHUP (log-out, `kill`, a closed terminal) and the loss
// of the X server. Main thread only.

#include <functional>

// SIGTERM, SIGINT and SIGHUP become calls of `onSignal` on the main thread
// from the GLib main loop (the toolkit's loop); nothing runs inside the
// signal handler itself. Replaces any earlier watch; an empty function
// gives the signals their default action back.
void WatchStopSignals(std::function<void(int)> onSignal);

// When the X connection breaks, `onLost` runs (it must not touch any window)
// and the process then ends with status 0. Install after the toolkit opened
// its display, so that this handler replaces the toolkit's own.
void WatchDisplayLoss(std::function<void()> onLost);

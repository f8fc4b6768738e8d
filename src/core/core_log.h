#pragma once
// Log lines go through wxLog at message level. Each line the program writes
// starts with the milliseconds of the current time, so that together with the
// log's own "%m-%d %X" stamp every line has millisecond precision:
//     wxLogMessage("%d ### Del Job => [JID_%d]", LogMs(), jid);

class Clock;

// The millisecond part (0-999) of the current time on the clock of the log
// that receives the lines (the system clock when none is open).
int LogMs();
// Set by the weekday log while it is the active log target.
void SetLogClock(const Clock* clock);

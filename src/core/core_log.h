#pragma once
// Log lines go through wxLog at message level. Each line the program writes
// starts with the milliseconds of the current time, so that together with the
// log's own "%m-%d %X" stamp every line has millisecond precision:
//     wxLogMessage("%d ### Del Job => [JID_%d]", LogMs(), jid);

// The millisecond part (0-999) of the core clock's current time.
int LogMs();

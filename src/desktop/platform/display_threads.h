#pragma once
// Job threads open display connections of their own (window titles, input,
// captures) while the toolkit uses its connection on the main thread. The
// display library must be told before the first connection exists.
// Call first thing in main().

void EnableDisplayThreads();

#pragma once
// The diagnostic log: one file per local weekday (log_0.txt = Sunday ...
// log_6.txt = Saturday) in the application folder. A week of history is kept
// without any clean-up: a file that grew past the size limit is emptied when
// its weekday comes round again, at the first logging tick of that day.
//
// Everything here runs on the main thread. Other threads just call
// wxLogMessage: wxWidgets queues their records, and the main thread writes
// them when it calls Flush() (or at the next tick or Close()), so the file is
// only ever written, switched and closed by the main thread.

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include <wx/string.h>

#include "core/clock.h"

class wxLog;
class WeekdayLogTarget;

class WeekdayLog {
public:
    // Period of the logging timer that drives OnLoggingTimer().
    static constexpr int kTimerPeriodMs = 240000;
    // A file longer than this when its weekday begins is emptied.
    static constexpr std::size_t kSizeLimit = 4000000;

    static constexpr const char* kStartBanner = ">>> Cadrelle Start >>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>";
    static constexpr const char* kEndBanner = "<<< Cadrelle End <<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<";

    // `appDir` is the application folder (no trailing separator needed);
    // `clock` (which must outlive the log) chooses the weekday and stamps lines.
    explicit WeekdayLog(const wxString& appDir, const Clock& clock = TheSystemClock());
    // Closes the log (end banner included) if it is still open.
    ~WeekdayLog();
    WeekdayLog(const WeekdayLog&) = delete;
    WeekdayLog& operator=(const WeekdayLog&) = delete;

    // Main thread, at start: opens today's file for appending whatever its
    // size, makes this log the active wxLog target and writes the start
    // banner, the version line and the file's size. False when the file
    // could not be opened: the target is installed all the same and drops
    // messages until a later switch opens a file. False without doing
    // anything when already open or off the main thread.
    bool Open();

    // Main thread, every kTimerPeriodMs: writes the queued lines of other
    // threads, then on a new weekday switches files (emptying the new one if
    // it is over kSizeLimit), and logs the checker counts.
    void OnLoggingTimer(std::size_t threadCount, std::size_t checkTriggerCount);

    // Main thread: writes the lines other threads have logged since the last
    // call. Call it every 50-200 ms from a loop without a GUI event loop.
    // Does nothing when called off the main thread.
    static void Flush();

    // Main thread, at the end: writes the queued lines and the end banner,
    // gives the previous wxLog target back and closes the file.
    void Close();

    // A file is open and receives the lines (not when its disk filled up:
    // the lines are then dropped until the next file opens).
    bool HasFile() const;
    // The target is installed (between Open() and Close()).
    bool IsOpen() const { return m_pTarget != nullptr; }
    // Weekday of the current file, 0 = Sunday; -1 before Open().
    int Weekday() const { return m_nWeekday; }
    // Full path of the file for the current weekday.
    wxString FilePath() const { return FilePathFor(m_nWeekday); }

    // "log_%d.txt"
    static wxString FileName(int weekday);

private:
    wxString FilePathFor(int weekday) const;
    // Closes the current file and opens `path` with `mode`; the target stays.
    bool Rebind(const wxString& path, const char* mode);

    wxString m_appDir;
    const Clock& m_clock;
    int m_nWeekday = -1;
    std::FILE* m_pFile = nullptr;
    WeekdayLogTarget* m_pTarget = nullptr;  // ours, active between Open() and Close()
    wxLog* m_pPrevious = nullptr;           // the target before Open(), given back by Close()
};



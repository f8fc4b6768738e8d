// The weekday files, their switching and truncation, the line format. The
// process runs in Europe/Berlin; 2026-11-25 is a Wednesday.

#include <thread>

#include <fcntl.h>
#include <unistd.h>

#include <wx/filename.h>
#include <wx/log.h>

#include "core/core_log.h"
#include "log_test_support.h"

namespace {

std::string Joined(const std::string& stamp, const std::vector<std::string>& messages)
{
    std::string text;
    for (const std::string& message : messages)
        text += stamp + message + "\n";
    return text;
}

}  // namespace

// Today's file is appended to at start whatever its size; the next day's
// is emptied at the switch only when it is over the limit.
TEST_F(LogTest, StartAppendsTicksWriteTwoLinesAndTheSwitchEmptiesOnlyOversizedFiles)
{
    const std::string extra = ", due to file size over: 4000000 bytes, log file will be cleared to logging new";
    const std::string path4 = dir.File("log_4.txt").ToStdString();
    for (const std::size_t size : {std::size_t{0}, std::size_t{100}, WeekdayLog::kSizeLimit,
                                   WeekdayLog::kSizeLimit + 1}) {
        SCOPED_TRACE(size);
        const bool emptied = size > WeekdayLog::kSizeLimit;
        const std::string old(size, 'x');  // no file at all for 0
        for (const char* name : {"log_3.txt", "log_4.txt"}) {
            wxRemoveFile(dir.File(name));
            if (size > 0)
                WriteFileBytes(dir.File(name), old);
        }
        clock.Set(Local(2026, 11, 25, 23, 54, 0, 250));
        WeekdayLog week(dir.Path(), clock);
        EXPECT_TRUE(week.Open());
        clock.Advance(WeekdayLog::kTimerPeriodMs - 243);
        week.OnLoggingTimer(8, 3);  // the same weekday: no switch
        clock.Set(Local(2026, 11, 26, 0, 2, 0, 123));
        week.OnLoggingTimer(4, 7);
        week.Close();

        const std::string size3 = "250 ### log_3.txt's size: " + std::to_string(size) + " bytes";
        const std::string wednesday = ReadFileBytes(dir.File("log_3.txt"));
        ASSERT_GE(wednesday.size(), size);
        EXPECT_TRUE(wednesday.compare(0, size, old) == 0);
        EXPECT_EQ(wednesday.substr(size),
                  Joined("11-25 23:54:00: ",
                         {WeekdayLog::kStartBanner, std::string(">>> - Version: ") + CADRELLE_VERSION + " (Build 1.Release2023)", size3}) +
                      Joined("11-25 23:58:00: ", {"7 ### On Logging Check Timer, every 240000 ms",
                                                  "7 ### nThreadCnt = 8, nCheckTriggerCnt = 3"}) +
                      Joined("11-26 00:02:00: ", {"123 ### On Logging Check Timer, every 240000 ms",
                                                  "123 >>> Log file will change to ==>> " + path4}));
        const std::string thursday = ReadFileBytes(path4);
        const std::size_t kept = emptied ? 0 : size;
        ASSERT_GE(thursday.size(), kept);
        EXPECT_TRUE(thursday.compare(0, kept, old, 0, kept) == 0);
        EXPECT_EQ(thursday.substr(kept),
                  Joined("11-26 00:02:00: ", {"123 >>> Log file changed to ==>> " + path4,
                                              "123 ### log_4.txt's size: " + std::to_string(size) + " bytes" +
                                                  (emptied ? extra : ""),
                                              "123 ### nThreadCnt = 4, nCheckTriggerCnt = 7", WeekdayLog::kEndBanner}));
    }
}

TEST_F(LogTest, StampAndMillisecondsComeFromTheClock)
{
    const struct { wxDateTime at; wxLogLevel level; std::string line; } cases[] = {
        {Local(2026, 11, 25, 9, 5, 7, 999), wxLOG_Message, "11-25 09:05:07: 999 ### probe"},
        {Local(2026, 12, 31, 23, 59, 59, 1), wxLOG_Error, "12-31 23:59:59: Error: 1 ### probe"},
    };
    clock.Set(Local(2026, 11, 25, 9, 0, 0));
    log.Open();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        clock.Set(c.at);
        wxLogGeneric(c.level, "%d ### probe", LogMs());
        WeekdayLog::Flush();
        EXPECT_EQ(Lines(3).back(), c.line);
    }
    // Written later by the main thread, stamped as when it was logged.
    clock.Set(Local(2026, 11, 25, 14, 0, 0, 900));
    std::thread([] { wxLogMessage("%d ### probe", LogMs()); }).join();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    clock.Advance(200);
    WeekdayLog::Flush();
    EXPECT_EQ(Lines(3).back(), "11-25 14:00:00: 900 ### probe");
}

TEST_F(LogTest, LoggingResumesAtTheNextSuccessfulSwitch)
{
    // Wednesday's and Friday's files cannot be opened: they are folders.
    ASSERT_TRUE(wxFileName::Mkdir(dir.File("log_3.txt")) && wxFileName::Mkdir(dir.File("log_5.txt")));
    clock.Set(Local(2026, 11, 25, 12, 0, 0));
    EXPECT_FALSE(log.Open());
    wxLogMessage("lost on Wednesday");
    for (int day = 26; day <= 28; ++day) {
        clock.Set(Local(2026, 11, day, 0, 1, 0));
        log.OnLoggingTimer(4, 1);
        EXPECT_EQ(log.HasFile(), day != 27) << day;
    }
    EXPECT_EQ(Lines(4).size(), 5u);
    EXPECT_NE(Lines(6).at(0).find(">>> Log file changed to ==>> " + dir.File("log_6.txt")), std::string::npos);
}

// A log on a full disk (Wednesday's file leads to /dev/full) stops writing
// and says so once on standard error; Thursday's file takes the lines again.
TEST_F(LogTest, AFullDiskStopsTheLogOnceUntilTheNextFile)
{
    ASSERT_EQ(::symlink("/dev/full", dir.File("log_3.txt").fn_str()), 0);
    const wxString errPath = dir.File("stderr.txt");
    const int saved = ::dup(2);
    const int err = ::open(errPath.fn_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ASSERT_TRUE(saved >= 0 && err >= 0);
    ::dup2(err, 2);
    clock.Set(Local(2026, 11, 25, 12, 0, 0));
    log.Open();
    const bool stopped = !log.HasFile();
    for (int i = 0; i < 50; ++i)
        wxLogMessage("line %d", i);
    clock.Set(Local(2026, 11, 26, 0, 1, 0));
    log.OnLoggingTimer(4, 1);
    ::dup2(saved, 2);
    ::close(saved);
    ::close(err);
    EXPECT_TRUE(stopped);
    EXPECT_TRUE(log.HasFile());
    EXPECT_EQ(ReadFileBytes(errPath), "Cadrelle: the disk holding the log file " + dir.File("log_3.txt").utf8_string() +
                                          " is full; log lines are dropped until the next weekday's file opens\n");
    EXPECT_NE(Lines(4).at(0).find(">>> Log file changed to ==>> "), std::string::npos);
}

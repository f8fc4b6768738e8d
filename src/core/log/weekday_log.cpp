#include "core/log/weekday_log.h"

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <system_error>

#include <wx/datetime.h>
#include <wx/filename.h>
#include <wx/log.h>
#include <wx/thread.h>
#include <wx/time.h>

#include "core/clock.h"
#include "core/core_log.h"
#include "core/data/atomic_file.h"

namespace {

constexpr const char* kTimestampFormat = "%m-%d %X";
// The version line of the start banner.
constexpr const char* kVersionText = CADRELLE_VERSION;
constexpr int kBuildNumber = 1;
constexpr const char* kBuildFlavour = "Release";
constexpr const char* kBuildYear = "2023";


// The stamp comes from the core clock, so tests that drive a ManualClock get
// the stamps they set. Records of other threads are written later, when the
// main thread flushes; they are moved back by the time they waited (measured
// on the clock wxWidgets stamped them with), so their second matches their
// millisecond field, which was taken when they were logged.
class CoreClockFormatter final : public wxLogFormatter {
public:
    explicit CoreClockFormatter(const Clock& clock) : m_clock(clock) {}

    wxString Format(wxLogLevel level, const wxString& msg, const wxLogRecordInfo& info) const override
    {
        wxString line;
        const wxString& format = wxLog::GetTimestamp();
        if (!format.empty())
            line << wxDateTime(wxLongLong(StampMs(info))).Format(format) << ": ";
        switch (level) {
        case wxLOG_Error:
            line << "Error: ";
            break;
        case wxLOG_Warning:
            line << "Warning: ";
            break;
        case wxLOG_Debug:
            line << "Debug: ";
            break;
        case wxLOG_Trace:
            line << "Trace: ";
            break;
        default:
            break;
        }
        return line << msg;
    }

private:
    std::int64_t StampMs(const wxLogRecordInfo& info) const
    {
        std::int64_t ms = m_clock.NowMs();
        if (info.threadId != wxThread::GetMainId()) {
            const std::int64_t waited = wxGetUTCTimeMillis().GetValue() - info.timestampMS;
            if (waited > 0)
                ms -= waited;
        }
        return ms;
    }

    const Clock& m_clock;
};

}  // namespace

// The active wxLog target while the log is open. wxWidgets calls it on the
// main thread only (records of other threads are replayed there), and it
// writes only there, so the file never sees two writers.
class WeekdayLogTarget final : public wxLog {
public:
    explicit WeekdayLogTarget(const Clock& clock) { SetFormatter(new CoreClockFormatter(clock)); }
    void SetFile(std::FILE* file, const wxString& path = wxString())
    {
        m_pFile = file;
        m_path = path;
        m_bFull = false;
    }
    // The disk is full: lines are dropped until another file is set.
    bool IsFull() const { return m_bFull; }

    void Flush() override
    {
        if (m_pFile && !m_bFull && wxThread::IsMain())
            std::fflush(m_pFile);
        wxLog::Flush();
    }

protected:
    void DoLogText(const wxString& msg) override
    {
        // Without a file (a failed open) the line is lost, as intended; a
        // thread-specific use of this target by a worker is refused.
        if (!m_pFile || m_bFull || !wxThread::IsMain())
            return;
        const wxString line = msg + "\n";
        const wxScopedCharBuffer text = line.utf8_str();  // may point into `line`
        errno = 0;
        // Line by line, so that a crash loses nothing already logged.
        if (std::fwrite(text.data(), 1, text.length(), m_pFile) == text.length() && std::fflush(m_pFile) == 0)
            return;
        if (errno != ENOSPC && errno != EDQUOT)
            return;
        // The log must not take the space the data file's next save needs:
        // nothing more is written to this disk until the next file opens.
        m_bFull = true;
        std::clearerr(m_pFile);
        std::cerr << "Cadrelle: the disk holding the log file " << m_path.utf8_str().data()
                  << " is full; log lines are dropped until the next weekday's file opens" << std::endl;
    }

private:
    std::FILE* m_pFile = nullptr;
    wxString m_path;
    bool m_bFull = false;
};

WeekdayLog::WeekdayLog(const wxString& appDir, const Clock& clock) : m_appDir(appDir), m_clock(clock) {}

WeekdayLog::~WeekdayLog()
{
    Close();
}

bool WeekdayLog::HasFile() const
{
    return m_pFile != nullptr && m_pTarget && !m_pTarget->IsFull();
}

wxString WeekdayLog::FileName(int weekday)
{
    return wxString::Format("log_%d.txt", weekday);
}

wxString WeekdayLog::FilePathFor(int weekday) const
{
    if (m_appDir.empty())
        return FileName(weekday);
    return wxFileName(m_appDir, FileName(weekday)).GetFullPath();  // the platform's own separator
}

bool WeekdayLog::Rebind(const wxString& path, const char* mode)
{
    if (m_pFile) {
        m_pTarget->SetFile(nullptr);
        std::fclose(m_pFile);
        m_pFile = nullptr;
    }
    // Log lines carry job parameters: the file is the user's alone.
    m_pFile = OpenPrivateFile(path, mode);
    m_pTarget->SetFile(m_pFile, path);
    wxLog::SetTimestamp(kTimestampFormat);
    if (!m_pFile) {
        // The log itself cannot carry this news.
        std::cerr << "Cadrelle: cannot open the log file " << path.utf8_str().data()
                  << "; log lines are dropped until the next weekday's file opens" << std::endl;
        return false;
    }
    return true;
}

bool WeekdayLog::Open()
{
    if (IsOpen() || !wxThread::IsMain())
        return false;
    m_nWeekday = m_clock.Now().GetWeekDay();
    m_pTarget = new WeekdayLogTarget(m_clock);
    m_pPrevious = wxLog::SetActiveTarget(m_pTarget);
    SetLogClock(&m_clock);
    // No size check at start: today's file is appended to whatever its size.
    // ("a+" is the "at+" of systems with a text mode.)
    const bool opened = Rebind(FilePath(), "a+");
    std::size_t size = 0;
    if (opened && std::fseek(m_pFile, 0, SEEK_END) == 0) {
        const long end = std::ftell(m_pFile);
        if (end > 0)
            size = static_cast<std::size_t>(end);
    }
    wxLogMessage(kStartBanner);
    wxLogMessage("%s", wxString(">>> - Version: ") + kVersionText + wxString::Format(" (Build %d.", kBuildNumber) +
                           kBuildFlavour + kBuildYear + ")");
    wxLogMessage("%d ### %s's size: %zd bytes", LogMs(), FileName(m_nWeekday), size);
    return opened;
}

namespace {

// Size of the file at `path`; 0 when it is missing or not a regular file.
std::size_t ExistingFileSize(const wxString& path)
{
    if (!wxFileName::FileExists(path))
        return 0;
    const wxULongLong size = wxFileName::GetSize(path);
    return size == wxInvalidSize ? 0 : static_cast<std::size_t>(size.GetValue());
}

}  // namespace

void WeekdayLog::OnLoggingTimer(std::size_t threadCount, std::size_t checkTriggerCount)
{
    if (!wxThread::IsMain())
        return;
    // Lines other threads logged before this tick belong to the current file.
    Flush();
    wxLogMessage("%d ### On Logging Check Timer, every %zd ms", LogMs(), static_cast<std::size_t>(kTimerPeriodMs));

    const int weekday = m_clock.Now().GetWeekDay();
    if (IsOpen() && weekday != m_nWeekday) {
        m_nWeekday = weekday;
        const wxString path = FilePath();
        wxLogMessage("%d >>> Log file will change to ==>> %s", LogMs(), path);

        const char* mode = "a+";
        wxString extra;
        const std::size_t size = ExistingFileSize(path);
        if (size > kSizeLimit) {
            mode = "w+";
            extra = wxString::Format(", due to file size over: %zd bytes, log file will be cleared to logging new",
                                     kSizeLimit);
        }
        Rebind(path, mode);
        wxLogMessage("%d >>> Log file changed to ==>> %s", LogMs(), path);
        wxLogMessage("%d ### %s's size: %zd bytes%s", LogMs(), FileName(weekday), size, extra);
    }

    wxLogMessage("%d ### nThreadCnt = %zd, nCheckTriggerCnt = %zd", LogMs(), threadCount, checkTriggerCount);
}

void WeekdayLog::Flush()
{
    if (wxThread::IsMain())
        wxLog::FlushActive();
}

void WeekdayLog::Close()
{
    if (!IsOpen() || !wxThread::IsMain())
        return;
    Flush();
    wxLogMessage(kEndBanner);
    // Whoever replaced our target meanwhile took it over (wxWidgets hands
    // the old target to the caller of SetActiveTarget); then only the file
    // is ours to close.
    if (wxLog::GetActiveTarget() == m_pTarget) {
        m_pTarget->SetFile(nullptr);
        wxLog::SetActiveTarget(m_pPrevious);
        SetLogClock(nullptr);
        delete m_pTarget;
    }
    m_pTarget = nullptr;
    m_pPrevious = nullptr;
    if (m_pFile) {
        std::fclose(m_pFile);
        m_pFile = nullptr;
    }
}


#include "desktop/jobs/screenshot_job.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include <wx/filefn.h>
#include <wx/filename.h>
#include <wx/log.h>
#include <wx/tokenzr.h>

#include "core/clock.h"
#include "core/core_log.h"
#include "core/jobs/job.h"
#include "core/translate.h"
#include "core/user_messages.h"
#include "desktop/jobs/png_writer.h"
#include "desktop/jobs/window_input_jobs.h"
#include "desktop/platform/screen_capture.h"
#include "core/session/session_context.h"

namespace {

// Past this the picture would not fit in memory on an ordinary machine
// (3 bytes a pixel while it is written).
constexpr long kMaxSide = 16384;
constexpr long long kMaxPixels = 1LL << 27;

// Enough for every capture one second can hold; a folder that refuses new
// names this long is broken in some other way.
constexpr int kMaxNameTries = 1000;

bool EnsureFolder(const wxString& path)
{
    return wxFileName::DirExists(path) || wxFileName::Mkdir(path, 0777, wxPATH_MKDIR_FULL);
}

}  // namespace

std::optional<CaptureRect> ScreenshotRect(int screenWidth, int screenHeight, const wxString& scaleText,
                                          const wxString& useRange, const wxString& rangeText, wxString& problem)
{
    const std::optional<long> scale = ParseScalePercent(scaleText);
    if (!scale) {
        problem = wxString::Format(
            TranslateFromAnyThread("Auto Screenshot: the scale \"%s\" is not a whole number of percent above 0."),
            scaleText);
        return std::nullopt;
    }
    CaptureRect rect;
    if (useRange != "1") {
        rect.width = ApplyScale(screenWidth, *scale);
        rect.height = ApplyScale(screenHeight, *scale);
    } else {
        std::vector<long> numbers;
        wxStringTokenizer pieces(rangeText, " \t", wxTOKEN_STRTOK);
        while (pieces.HasMoreTokens() && numbers.size() < 4) {
            const std::optional<long> number = ParseWholeNumber(pieces.GetNextToken());
            if (!number)
                break;
            numbers.push_back(*number);
        }
        if (numbers.size() < 4) {
            problem = wxString::Format(TranslateFromAnyThread("Auto Screenshot: the range \"%s\" is not four whole "
                                                              "numbers (left top width height)."),
                                       rangeText);
            return std::nullopt;
        }
        rect.left = numbers[0];
        rect.top = numbers[1];
        rect.width = ApplyScale(numbers[2], *scale);
        rect.height = ApplyScale(numbers[3], *scale);
    }
    if (rect.width <= 0 || rect.height <= 0) {
        problem = wxString::Format(
            TranslateFromAnyThread("Auto Screenshot: the picture would be %ld x %ld pixels; nothing to capture."),
            rect.width, rect.height);
        return std::nullopt;
    }
    if (rect.width > kMaxSide || rect.height > kMaxSide ||
        static_cast<long long>(rect.width) * rect.height > kMaxPixels) {
        problem = wxString::Format(
            TranslateFromAnyThread("Auto Screenshot: a picture of %ld x %ld pixels is too large (at most %ld on a "
                                   "side)."),
            rect.width, rect.height, kMaxSide);
        return std::nullopt;
    }
    return rect;
}

wxString ScreenshotDayFolder(const wxString& base, const wxDateTime& stamp)
{
    wxString folder = base;
    if (folder.empty() || !wxFileName::IsPathSeparator(folder.Last()))
        folder += wxFILE_SEP_PATH;
    return folder + stamp.Format("%Y-%m-%d");
}

wxString ScreenshotFileStem(const wxString& prefix, const wxDateTime& stamp)
{
    return prefix + "-" + stamp.Format("%m%d%H%M_%S");
}

void RunScreenshotJob(const Job& job, SessionContext& context)
{
    const int jid = job.GetId();
    if (!RequireDisplaySession(job, context))
        return;
    ScreenSize screen;
    wxString problem;
    if (!ReadScreenSize(screen, problem)) {
        ReportJobProblem(job, context, problem);
        return;
    }
    const std::optional<CaptureRect> rect =
        ScreenshotRect(screen.width, screen.height, job.GetParamAt(2), job.GetParamAt(3), job.GetParamAt(4), problem);
    if (!rect) {
        ReportJobProblem(job, context, problem);
        return;
    }
    RgbImage image;
    if (!CaptureScreen(static_cast<int>(rect->left), static_cast<int>(rect->top), static_cast<int>(rect->width),
                       static_cast<int>(rect->height), image, problem)) {
        ReportJobProblem(job, context, problem);
        return;
    }

    const wxString base = job.GetParamAt(0);
    if (base.empty() || !EnsureFolder(base)) {
        wxLogMessage("%d --- [JID_%d] Screenshot not saved: the folder \"%s\" cannot be created", LogMs(), jid, base);
        return;
    }
    // Named after the moment one second ahead.
    const wxDateTime stamp(wxLongLong(context.GetClock().NowMs() + 1000));
    const wxString dayFolder = ScreenshotDayFolder(base, stamp);
    if (!EnsureFolder(dayFolder)) {
        wxLogMessage("%d --- [JID_%d] Screenshot not saved: the folder \"%s\" cannot be created", LogMs(), jid,
                     dayFolder);
        return;
    }
    // Exclusive creation: a capture of another job in the same second cannot
    // take the same name between our check and our write.
    wxString stem = ScreenshotFileStem(job.GetParamAt(1), stamp);
    wxString path;
    std::FILE* file = nullptr;
    for (int tries = 0; tries < kMaxNameTries && !file; ++tries) {
        path = dayFolder + wxFILE_SEP_PATH + stem + ".png";
        file = wxFopen(path, "wbx");
        if (!file && errno != EEXIST)
            break;
        if (!file)
            stem += "_";
    }
    if (!file) {
        wxLogMessage("%d --- [JID_%d] Screenshot not saved: \"%s\" cannot be created (%s)", LogMs(), jid, path,
                     wxString::FromUTF8(std::strerror(errno)));
        return;
    }
    wxString error;
    const bool written = WritePngRgb(file, image.width, image.height, image.rgb.data(), error);
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed) {
        wxRemoveFile(path);
        wxLogMessage("%d --- [JID_%d] Screenshot not saved: writing \"%s\" failed (%s)", LogMs(), jid, path,
                     written ? wxString("the file could not be closed") : error);
        return;
    }
    wxLogMessage("%d --- [JID_%d] Screenshot of %d x %d saved as %s", LogMs(), jid, image.width, image.height, path);
    if (job.GetParamAt(5) == "1")
        context.Messages().ShowNotice(jid, TranslateFromAnyThread("A screenshot was saved as:\n ") + path);
}

#pragma once
// Kind 7 "Auto Screenshot": parameters 0 base folder, 1 file prefix, 2 scale
// in percent, 3 "1" to capture the range of 4 ("left top width height"),
// 5 "1" to notify. The picture goes to <base>/<YYYY-MM-DD>/<prefix>-
// <MMDDhhmm_ss>.png, named after the moment one second from now.

#include <optional>

#include <wx/datetime.h>
#include <wx/string.h>

class Job;
class SessionContext;

struct CaptureRect {
    long left = 0;
    long top = 0;
    long width = 0;
    long height = 0;
};

// The rectangle to capture, or nothing with `problem` set. Only width and
// height are scaled; left and top are taken as they are.
std::optional<CaptureRect> ScreenshotRect(int screenWidth, int screenHeight, const wxString& scaleText,
                                          const wxString& useRange, const wxString& rangeText, wxString& problem);

// <base>/<YYYY-MM-DD>; a separator already ending `base` is not doubled.
wxString ScreenshotDayFolder(const wxString& base, const wxDateTime& stamp);
// <prefix>-<MMDDhhmm_ss>, without ".png".
wxString ScreenshotFileStem(const wxString& prefix, const wxDateTime& stamp);

void RunScreenshotJob(const Job& job, SessionContext& context);

#include "desktop/jobs/input_jobs.h"
#include "core/text_number.h"

#include <wx/log.h>

#include "core/core_log.h"
#include "core/jobs/job.h"
#include "core/translate.h"
#include "desktop/jobs/key_names.h"
#include "desktop/jobs/window_input_jobs.h"
#include "core/session/session_context.h"

namespace {

// After moving the pointer, before pressing: some toolkits only take a
// click where they have seen the pointer arrive.
constexpr int kSettleMs = 30;
// After the focusing click, before typing: a window manager gives the focus
// after it has seen the click.
constexpr int kFocusMs = 150;
constexpr long kDefaultClickIntervalMs = 1000;

bool IsBlank(wxUniChar c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::unique_ptr<InputSimulator> OpenSimulator(const Job& job, SessionContext& context)
{
    if (!RequireDisplaySession(job, context))
        return nullptr;
    wxString problem;
    std::unique_ptr<InputSimulator> input = InputSimulator::Open(problem);
    if (!input)
        ReportJobProblem(job, context, wxString::Format(TranslateFromAnyThread("%s cannot run here.\n%s"),
                                               job.GetTypeName(), problem));
    return input;
}

}  // namespace

std::optional<ScreenPoint> ParsePoint(const wxString& text)
{
    const int comma = text.Find(',');
    if (comma == wxNOT_FOUND)
        return std::nullopt;
    const std::optional<long> x = ParseWholeNumber(text.Left(comma));
    const std::optional<long> y = ParseWholeNumber(text.Mid(comma + 1));
    if (!x || !y || *x < 0 || *y < 0)
        return std::nullopt;
    return ScreenPoint{*x, *y};
}

bool ParsePointList(const wxString& text, std::vector<ScreenPoint>& points, wxString& bad)
{
    points.clear();
    // A point ends where its y does; blanks may stand around the comma, so
    // cutting at blanks alone would split "1, 2".
    std::size_t i = 0;
    const std::size_t n = text.length();
    while (i < n) {
        while (i < n && (IsBlank(text[i]) || text[i] == ';'))
            ++i;
        if (i == n)
            break;
        const std::size_t start = i;
        while (i < n && text[i] != ',' && text[i] != ';' && !IsBlank(text[i]))
            ++i;
        while (i < n && IsBlank(text[i]))
            ++i;
        if (i < n && text[i] == ',') {
            ++i;
            while (i < n && IsBlank(text[i]))
                ++i;
            while (i < n && text[i] != ';' && text[i] != ',' && !IsBlank(text[i]))
                ++i;
        }
        const wxString piece = text.Mid(start, i - start);
        const std::optional<ScreenPoint> point = ParsePoint(piece);
        if (!point) {
            bad = Trimmed(piece);
            return false;
        }
        points.push_back(*point);
    }
    return true;
}

ScreenPoint ScalePoint(const ScreenPoint& point, long scale)
{
    return ScreenPoint{ApplyScale(point.x, scale), ApplyScale(point.y, scale)};
}

std::optional<ClickKind> ParseClickKind(const wxString& text)
{
    const wxString t = Trimmed(text);
    if (t.empty() || t == "0" || t.IsSameAs("Click", false))
        return ClickKind::Single;
    if (t == "1" || t.IsSameAs("Double Click", false))
        return ClickKind::Double;
    return std::nullopt;
}

std::optional<MouseButton> ParseMouseButton(const wxString& text)
{
    const wxString t = Trimmed(text);
    if (t.empty() || t == "0" || t.IsSameAs("Left Button", false))
        return MouseButton::Left;
    if (t == "1" || t.IsSameAs("Right Button", false))
        return MouseButton::Right;
    return std::nullopt;
}

// Presses the keys in order and lets go of them in reverse, like a person
// pressing a chord such as CTRL + SHIFT + ESCAPE.
void RunSendKeyJob(const Job& job, SessionContext& context)
{
    struct NamedKey {
        wxString name;
        InputKey key;
    };
    std::vector<NamedKey> keys;
    for (std::size_t i = 0; i < 3; ++i) {
        const wxString name = Trimmed(job.GetParamAt(i));
        if (name.empty())
            continue;
        const std::optional<InputKey> key = KeyFromName(name);
        if (!key) {
            ReportJobProblem(job, context, wxString::Format(TranslateFromAnyThread("Send Key: \"%s\" is not a key name. Use "
                                                                          "a name of the key list, such as CTRL, "
                                                                          "SHIFT, ESCAPE, RETURN/ENTER or F5."),
                                                   name));
            return;
        }
        keys.push_back({name, *key});
    }
    if (keys.empty()) {
        ReportJobProblem(job, context, TranslateFromAnyThread("Send Key: no key is set."));
        return;
    }
    std::unique_ptr<InputSimulator> input = OpenSimulator(job, context);
    if (!input)
        return;
    std::size_t pressed = 0;
    wxString missing;
    for (; pressed < keys.size(); ++pressed) {
        if (!input->KeyDown(keys[pressed].key)) {
            missing = keys[pressed].name;
            break;
        }
    }
    while (pressed > 0)
        input->KeyUp(keys[--pressed].key);
    input->Pause(0);
    if (!missing.empty()) {
        ReportJobProblem(job, context, wxString::Format(TranslateFromAnyThread("Send Key: this keyboard has no %s key."),
                                               missing));
        return;
    }
    wxString chord;
    for (const NamedKey& key : keys)
        chord += (chord.empty() ? "" : " + ") + key.name;
    wxLogMessage("%d --- [JID_%d] Sent %s", LogMs(), job.GetId(), chord);
}

// Two sets of a point and a text: a click on the point gives the window
// there the focus, then the text is typed. A set without a point is skipped.
void RunKeyTypingJob(const Job& job, SessionContext& context)
{
    const std::optional<long> scale = ParseScalePercent(job.GetParamAt(4));
    if (!scale) {
        ReportJobProblem(job, context, wxString::Format(TranslateFromAnyThread("Key Typing: the scale \"%s\" is not a whole "
                                                                      "number of percent above 0."),
                                               job.GetParamAt(4)));
        return;
    }
    struct TypingSet {
        ScreenPoint point;
        wxString text;
    };
    std::vector<TypingSet> sets;
    for (std::size_t set = 0; set < 2; ++set) {
        const wxString pointText = Trimmed(job.GetParamAt(set * 2));
        if (pointText.empty())
            continue;
        const std::optional<ScreenPoint> point = ParsePoint(pointText);
        if (!point) {
            ReportJobProblem(job, context, wxString::Format(TranslateFromAnyThread("Key Typing: the point of set %d, \"%s\", "
                                                                          "is not \"x,y\" (two whole numbers)."),
                                                   static_cast<int>(set + 1), pointText));
            return;
        }
        sets.push_back({ScalePoint(*point, *scale), job.GetParamAt(set * 2 + 1)});
    }
    if (sets.empty()) {
        ReportJobProblem(job, context, TranslateFromAnyThread("Key Typing: no point is set."));
        return;
    }
    std::unique_ptr<InputSimulator> input = OpenSimulator(job, context);
    if (!input)
        return;
    for (const TypingSet& set : sets) {
        input->MoveTo(static_cast<int>(set.point.x), static_cast<int>(set.point.y));
        input->Pause(kSettleMs);
        input->Click(MouseButton::Left);
        input->Pause(kFocusMs);
        const bool all = input->TypeText(set.text);
        input->Pause(0);
        wxLogMessage("%d --- [JID_%d] Typed %zu characters at (%ld, %ld)%s", LogMs(), job.GetId(), set.text.length(),
                     set.point.x, set.point.y, all ? "" : "; some could not be typed on this keyboard");
    }
}

// Each point of the list, scaled, is clicked with the chosen kind and
// button; the interval lies between two points' clicks.
void RunMouseClickJob(const Job& job, SessionContext& context)
{
    std::vector<ScreenPoint> points;
    wxString bad;
    if (!ParsePointList(job.GetParamAt(0), points, bad)) {
        ReportJobProblem(job, context, wxString::Format(TranslateFromAnyThread("Mouse Click: \"%s\" in the point list is not "
                                                                      "a point \"x,y\" (two whole numbers)."),
                                               bad));
        return;
    }
    if (points.empty()) {
        ReportJobProblem(job, context, TranslateFromAnyThread("Mouse Click: the point list is empty."));
        return;
    }
    const wxString intervalText = Trimmed(job.GetParamAt(1));
    const std::optional<long> interval =
        intervalText.empty() ? std::optional<long>(kDefaultClickIntervalMs) : ParseWholeNumber(intervalText);
    if (!interval || *interval < 0) {
        ReportJobProblem(job, context, wxString::Format(TranslateFromAnyThread("Mouse Click: the interval \"%s\" is not a "
                                                                      "whole number of milliseconds."),
                                               intervalText));
        return;
    }
    const std::optional<ClickKind> kind = ParseClickKind(job.GetParamAt(2));
    const std::optional<MouseButton> button = ParseMouseButton(job.GetParamAt(3));
    if (!kind || !button) {
        ReportJobProblem(job, context, wxString::Format(TranslateFromAnyThread("Mouse Click: \"%s\" is not a click type "
                                                                      "(Click, Double Click) or mouse button (Left "
                                                                      "Button, Right Button)."),
                                               !kind ? job.GetParamAt(2) : job.GetParamAt(3)));
        return;
    }
    const std::optional<long> scale = ParseScalePercent(job.GetParamAt(4));
    if (!scale) {
        ReportJobProblem(job, context, wxString::Format(TranslateFromAnyThread("Mouse Click: the scale \"%s\" is not a whole "
                                                                      "number of percent above 0."),
                                               job.GetParamAt(4)));
        return;
    }
    std::unique_ptr<InputSimulator> input = OpenSimulator(job, context);
    if (!input)
        return;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i > 0)
            input->Pause(static_cast<int>(*interval));
        const ScreenPoint at = ScalePoint(points[i], *scale);
        input->MoveTo(static_cast<int>(at.x), static_cast<int>(at.y));
        input->Pause(kSettleMs);
        if (*kind == ClickKind::Double)
            input->DoubleClick(*button);
        else
            input->Click(*button);
        input->Pause(0);
        wxLogMessage("%d --- [JID_%d] %s %s at (%ld, %ld)", LogMs(), job.GetId(),
                     *kind == ClickKind::Double ? "Double click" : "Click",
                     *button == MouseButton::Left ? "left" : "right", at.x, at.y);
    }
}

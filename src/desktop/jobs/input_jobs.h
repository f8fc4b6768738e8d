#pragma once
// Kinds 13 "Send Key" (parameters 0 to 2: key names), 14 "Key Typing"
// (0 and 2: points "x,y"; 1 and 3: the texts typed there; 4: scale in
// percent) and 15 "Mouse Click" (0 point list, 1 interval in ms, 2 click
// type, 3 button, 4 scale in percent).

#include <optional>
#include <vector>

#include <wx/string.h>

#include "desktop/platform/input_simulator.h"

class Job;
class SessionContext;

struct ScreenPoint {
    long x = 0;
    long y = 0;
    bool operator==(const ScreenPoint& other) const { return x == other.x && y == other.y; }
};

// "x,y": two whole numbers of at least 0, blanks around either allowed.
std::optional<ScreenPoint> ParsePoint(const wxString& text);
// Points "x,y" separated by ";" and/or blanks ("1,2;3,4", "1,2 3,4",
// "1, 2 ; 3 ,4"). False with `bad` set to the first piece that is no point.
bool ParsePointList(const wxString& text, std::vector<ScreenPoint>& points, wxString& bad);
ScreenPoint ScalePoint(const ScreenPoint& point, long scale);

enum class ClickKind { Single, Double };
// "Click" or "0" (also empty) / "Double Click" or "1".
std::optional<ClickKind> ParseClickKind(const wxString& text);
// "Left Button" or "0" (also empty) / "Right Button" or "1".
std::optional<MouseButton> ParseMouseButton(const wxString& text);

void RunSendKeyJob(const Job& job, SessionContext& context);
void RunKeyTypingJob(const Job& job, SessionContext& context);
void RunMouseClickJob(const Job& job, SessionContext& context);

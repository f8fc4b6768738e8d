#pragma once
// The one harness for in-process GUI tests, run inside the real wx event loop
// (gui_test_main.cpp) under desktop_session.sh. Message boxes are caught with
// wxTEST_DIALOG; waiting is for a condition with a deadline, never a sleep.

#include <functional>

#include <wx/msgdlg.h>
#include <wx/testing.h>
#include <wx/window.h>

namespace guitest {

// Runs the event loop until `condition` holds (true) or `timeoutMs` pass.
bool WaitFor(const std::function<bool()>& condition, int timeoutMs = 5000);
// Lets pending events (sizes, paints, queued calls) run once.
void Settle();
// A fresh application folder under the private HOME (gui_test_main.cpp).
wxString FreshAppDir();
// Saves what the window shows, once painted, as $CADRELLE_SCREENSHOT_DIR/`name`.png
// (only when set: pictures for people to look at); returns the path or "".
wxString SaveScreenshot(wxWindow* window, const wxString& name);
// `parent` or its first descendant (any top-level window's when null) named `name`.
inline wxWindow* FindByName(const wxString& name, wxWindow* parent = nullptr) { return wxWindow::FindWindowByName(name, parent); }
template <class T>
T* Find(wxWindow* parent, const wxString& name) { return dynamic_cast<T*>(FindByName(name, parent)); }
// Sends the command event a user's action on `control` sends (a click, a tick).
void Fire(wxWindow* control, wxEventType type = wxEVT_BUTTON, int value = 0);
// The text of a file; all log files of an application folder.
wxString ReadText(const wxString& path);
wxString LogText(const wxString& appDir);
// A job and a trigger as the data file stores them (trigger dates in 1999..2999).
wxString JobXml(int jid, int kind, const char* desc, bool enabled, int tid, const char* info);
wxString TriggerXml(int tid, int kind, const char* condition);
// Writes `appDir`/data/data1.xml holding `items`.
void WriteData(const wxString& appDir, const wxString& items);

// Works a modal dialog while it is up; returns what ShowModal then returns.
template <class D>
struct Drive : wxExpectModalBase<D, Drive<D>> {
    explicit Drive(std::function<int(D*)> work) : m_work(std::move(work)) {}
    int OnInvoked(D* dlg) const override { return m_work(dlg); }
    std::function<int(D*)> m_work;
};

// A message box captioned "Cadrelle" (or Caption()) whose text is (or, when
// `part`, contains) `text`, answered `answer`; sets *seen when shown.
class ExpectMessage : public wxExpectModal<wxMessageDialog> {
public:
    explicit ExpectMessage(const wxString& text, int answer = wxOK, bool part = false, bool* seen = nullptr)
        : wxExpectModal<wxMessageDialog>(answer), m_text(text), m_part(part), m_seen(seen) { Describe(text); }
    ExpectMessage Caption(const wxString& c) const { ExpectMessage copy(*this); copy.m_caption = c; return copy; }

protected:
    int OnInvoked(wxMessageDialog* dlg) const override;

private:
    wxString m_text;
    bool m_part;
    bool* m_seen;
    wxString m_caption = "Cadrelle";
};

}  // namespace guitest

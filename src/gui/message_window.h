#pragma once
// A small window with a text and an OK button that stays until the user
// closes it, without blocking anything: important reminders, and notices
// when the desktop has no notification service. Main thread only.

#include <wx/frame.h>

class MessageWindow final : public wxFrame {
public:
    // Shows a new window; it destroys itself when closed.
    static MessageWindow* Open(const wxString& title, const wxString& text);

    wxString GetText() const { return m_text; }

private:
    MessageWindow(const wxString& title, const wxString& text);

    wxString m_text;
};

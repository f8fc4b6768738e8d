#pragma once
// The five-minute notice: a small window that says which job runs soon and
// offers to disable it, edit its trigger time or just close. It appears
// without taking the keyboard focus (the user may be typing elsewhere),
// stays on top, and stacks above the notices already open so that none
// covers another. Main thread only; it destroys itself when closed.

#include <cstdint>
#include <functional>

#include <wx/frame.h>

class NoticeWindow final : public wxFrame {
public:
    struct Actions {
        std::function<void(std::int32_t jid)> disable;
        std::function<void(std::int32_t jid)> edit;
    };

    static NoticeWindow* Open(std::int32_t jid, const wxString& typeName, Actions actions);
    // The text shown, for the log and tests.
    static wxString NoticeText(std::int32_t jid, const wxString& typeName);

    std::int32_t GetJid() const { return m_nJid; }
    wxString GetText() const { return m_text; }

private:
    NoticeWindow(std::int32_t jid, const wxString& typeName, Actions actions);
    ~NoticeWindow() override;
    void PlaceInFreeSlot();

    std::int32_t m_nJid;
    wxString m_text;
    Actions m_actions;
    int m_nSlot = 0;
};

#pragma once
// What worker threads tell the user, shown on the main thread, never from
// the thread that asked: message boxes, job notices (a desktop notification,
// or a window where the desktop has none) and reminders.

#include "core/user_messages.h"

class GuiUserMessages final : public UserMessages {
public:
    void ShowMessage(const wxString& text, const wxString& caption) override;
    void ShowJobFailure(std::uint32_t jobId, const wxString& text) override;
    void ShowNotice(std::uint32_t jobId, const wxString& text) override;
    void ShowReminder(std::uint32_t jobId, const wxString& text, bool important) override;
};

#pragma once
// Messages meant for the user (message boxes). The core and the worker threads
// never show windows: they hand the text to this interface, which the GUI
// implements on the main thread and a headless run writes to the log.

#include <wx/string.h>

class UserMessages {
public:
    virtual ~UserMessages() = default;
    // May be called from any thread; must not block on the user.
    virtual void ShowMessage(const wxString& text, const wxString& caption) = 0;
    // True when ShowMessage already writes to standard error, so callers
    // that must also report there do not say it twice.
    virtual bool EchoesToStderr() const { return false; }
};

// Writes the message to the log and to standard error.
class LogUserMessages final : public UserMessages {
public:
    void ShowMessage(const wxString& text, const wxString& caption) override;
    bool EchoesToStderr() const override { return true; }
};

UserMessages& GetUserMessages();
// Installs `messages` (not owned); nullptr restores the logging default.
void SetUserMessages(UserMessages* messages);

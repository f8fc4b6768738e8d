#pragma once
// Messages meant for the user. The core and the worker threads never show
// windows: they hand the text to this interface, which the GUI implements on
// the main thread and a headless run writes to the log.

#include <cstdint>

#include <wx/datetime.h>
#include <wx/string.h>

class UserMessages {
public:
    virtual ~UserMessages() = default;
    // A message box. May be called from any thread; must not block on the
    // user.
    virtual void ShowMessage(const wxString& text, const wxString& caption) = 0;
    // A job that could not do its work: a message box naming the job and the
    // time (JobFailureText). At most one per job is on screen; further
    // failures of that job meanwhile are only logged. Any thread.
    virtual void ShowJobFailure(std::uint32_t /*jobId*/, const wxString& text) { ShowMessage(text, "Cadrelle"); }
    // A notice from a job about its own outcome (a backup that ended, a saved
    // screenshot): shown without stopping anything and going away by itself.
    // Any thread.
    virtual void ShowNotice(std::uint32_t jobId, const wxString& text);
    // A "Reminder" job's message: an important one stays on screen until the
    // user closes it, any other one goes away by itself. Any thread.
    virtual void ShowReminder(std::uint32_t jobId, const wxString& text, bool important);
    // True when ShowMessage already writes to standard error, so callers
    // that must also report there do not say it twice.
    virtual bool EchoesToStderr() const { return false; }
};

// `text`, then a blank line, the job (description and JID) and the moment.
wxString JobFailureText(const wxString& text, std::int32_t jid, const wxString& description, const wxDateTime& when);

// Writes every message to the log and message boxes also to standard error.
class LogUserMessages final : public UserMessages {
public:
    void ShowMessage(const wxString& text, const wxString& caption) override;
    bool EchoesToStderr() const override { return true; }
};


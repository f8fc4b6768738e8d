#include "core/user_messages.h"

#include <cstdio>

#include <wx/log.h>

#include "core/core_log.h"
#include "core/translate.h"

wxString JobFailureText(const wxString& text, std::int32_t jid, const wxString& description, const wxDateTime& when)
{
    return text + "\n\n" +
           wxString::Format(TranslateFromAnyThread("Job: %s (JID %d)\nTime: %s"), description, static_cast<int>(jid),
                            when.Format("%Y-%m-%d %H:%M:%S"));
}

void LogUserMessages::ShowMessage(const wxString& text, const wxString& caption)
{
    wxLogMessage("%d ### [%s] %s", LogMs(), caption, text);
    std::fprintf(stderr, "%s: %s\n", static_cast<const char*>(caption.utf8_str()),
                 static_cast<const char*>(text.utf8_str()));
}

void UserMessages::ShowNotice(std::uint32_t jobId, const wxString& text)
{
    wxLogMessage("%d ### [JID_%u] Notice: %s", LogMs(), jobId, text);
}

void UserMessages::ShowReminder(std::uint32_t jobId, const wxString& text, bool important)
{
    wxLogMessage("%d ### [JID_%u] Reminder%s: %s", LogMs(), jobId, important ? " (important)" : "", text);
}


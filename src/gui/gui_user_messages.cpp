#include "gui/gui_user_messages.h"

#include <set>

#include <wx/app.h>
#include <wx/log.h>
#include <wx/msgdlg.h>

#include "core/core_log.h"
#include "core/translate.h"
#include "desktop/platform/desktop_notifier.h"
#include "gui/message_window.h"

void GuiUserMessages::ShowMessage(const wxString& text, const wxString& caption)
{
    wxLogMessage("%d ### [%s] %s", LogMs(), caption, text);
    // Queued to the main thread; the caller never waits for the user.
    wxTheApp->CallAfter([text, caption] { wxMessageBox(text, caption, wxOK | wxCENTRE); });
}

void GuiUserMessages::ShowJobFailure(std::uint32_t jobId, const wxString& text)
{
    wxLogMessage("%d ### [Cadrelle] %s", LogMs(), text);
    wxTheApp->CallAfter([jobId, text] {
        // A job that fails every few seconds must not stack a box per firing.
        static std::set<std::uint32_t> open;
        if (!open.insert(jobId).second) {
            wxLogMessage("%d ### [JID_%u] Its earlier failure is still on screen: no second box", LogMs(), jobId);
            return;
        }
        wxMessageBox(text, "Cadrelle", wxOK | wxCENTRE);
        open.erase(jobId);
    });
}

void GuiUserMessages::ShowNotice(std::uint32_t jobId, const wxString& text)
{
    UserMessages::ShowNotice(jobId, text);
    const NotifyOutcome outcome = SendDesktopNotification("Cadrelle", text);
    if (outcome.ok)
        return;
    wxLogMessage("%d ### [JID_%u] Notice shown in a window: %s", LogMs(), jobId, outcome.reason);
    wxTheApp->CallAfter([text] { MessageWindow::Open("Cadrelle", text); });
}

void GuiUserMessages::ShowReminder(std::uint32_t jobId, const wxString& text, bool important)
{
    UserMessages::ShowReminder(jobId, text, important);
    // An important reminder says so in its title.
    wxString title = "Cadrelle - " + TranslateFromAnyThread("Reminder");
    if (important)
        title << " - " << TranslateFromAnyThread("Important");
    wxTheApp->CallAfter([title, text] { MessageWindow::Open(title, text); });
}

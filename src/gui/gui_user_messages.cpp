#include "gui/gui_user_messages.h"

#include <wx/app.h>
#include <wx/log.h>
#include <wx/msgdlg.h>

#include "core/core_log.h"

void GuiUserMessages::ShowMessage(const wxString& text, const wxString& caption)
{
    wxLogMessage("%d ### [%s] %s", LogMs(), caption, text);
    // Queued to the main thread; the caller never waits for the user.
    wxTheApp->CallAfter([text, caption] { wxMessageBox(text, caption, wxOK | wxCENTRE); });
}

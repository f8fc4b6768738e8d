#include "gui/cadrelle_app.h"

#include <wx/log.h>

#include <wx/msgdlg.h>

#include "core/app_dir.h"
#include "core/i18n/ui_language.h"
#include "core/app_start_time.h"
#include "desktop/platform/idle_time_platform.h"
#include "desktop/desktop_actions.h"
#include "gui/gui_user_messages.h"
#include "gui/main_frame.h"

namespace {
wxString g_appDirOverride;
GuiUserMessages g_userMessages;
std::unique_ptr<IdleTimeSource> g_idleTime;
}  // namespace

wxIMPLEMENT_APP_NO_MAIN(CadrelleApp);

void CadrelleApp::SetAppDirOverride(const wxString& appDir)
{
    g_appDirOverride = appDir;
}

bool CadrelleApp::OnInit()
{
    SetVendorName("Vantrel");
    SetAppName("Cadrelle");
    // Log lines go to standard error, never into dialogs.
    delete wxLog::SetActiveTarget(new wxLogStderr);
    SetUpUiLanguage(ExecutableDir());
    SetUserMessages(&g_userMessages);
    m_pInstance = std::make_unique<SingleInstanceGuard>();
    if (m_pInstance->IsAnotherRunning()) {
        wxMessageBox(wxGetTranslation(SingleInstanceGuard::RefusalMessage()), "Cadrelle", wxOK | wxICON_ERROR);
        return false;
    }
    SetAppStartTime(wxDateTime::UNow());
    RegisterDesktopJobActions();
    g_idleTime = CreatePlatformIdleTimeSource();
    SetIdleTimeSource(g_idleTime.get());
    auto* frame = new CadrelleFrame(ChooseAppDir(g_appDirOverride, ExecutableDir()));
    frame->Show();
    return true;
}

int CadrelleApp::OnExit()
{
    SetIdleTimeSource(nullptr);
    g_idleTime.reset();
    SetUserMessages(nullptr);
    return wxApp::OnExit();
}

#include "gui/cadrelle_app.h"

#include <iostream>

#include <wx/config.h>
#include <wx/image.h>
#include <wx/log.h>
#include <wx/msgdlg.h>

#include "core/app_dir.h"
#include "core/i18n/ui_language.h"
#include "desktop/control/control_client.h"
#include "gui/main_frame.h"
#include "core/prefs/preference.h"

namespace {
wxString g_appDirOverride;
int g_refusedStartStatus = -1;
}  // namespace

wxIMPLEMENT_APP_NO_MAIN(CadrelleApp);

int CadrelleApp::RefusedStartStatus()
{
    return g_refusedStartStatus;
}

void CadrelleApp::SetAppDirOverride(const wxString& appDir)
{
    g_appDirOverride = appDir;
}

bool CadrelleApp::OnInit()
{
    // Identity, then the configuration (keys read with a default are written
    // back), the folder, the single-instance guard, images, the frame.
    SetVendorName("Vantrel");
    SetAppName("Cadrelle");
    wxConfigBase::Get()->SetRecordDefaults(true);
    const wxString appDir = ChooseAppDir(g_appDirOverride, ExecutableDir());
    // Log lines go to standard error, never into dialogs.
    delete wxLog::SetActiveTarget(new wxLogStderr);
    ShareUiLanguageWithToolkit(SetUpUiLanguage(ExecutableDir()));
    m_pInstance = std::make_unique<SingleInstanceGuard>();
    if (m_pInstance->IsAnotherRunning()) {
        // The running instance comes to the front (through its password
        // when one is set); this one still says why it ends.
        const bool shown = SendControlRequestQuietly(ControlRequest{ControlRequest::Kind::Show});
        g_refusedStartStatus = shown ? 0 : 1;
        wxMessageBox(wxGetTranslation(SingleInstanceGuard::RefusalMessage()), "Cadrelle", wxOK | wxICON_ERROR);
        m_pInstance.reset();
        return false;
    }
    if (!m_pInstance->IsHeld()) {
        const wxString problem = wxString::FromUTF8(m_pInstance->Problem());
        std::cerr << "cadrelle: " << m_pInstance->Problem() << "; not starting." << std::endl;
        wxMessageBox(wxString::Format(_("Cadrelle cannot start: %s."), problem), "Cadrelle", wxOK | wxICON_ERROR);
        g_refusedStartStatus = 1;
        m_pInstance.reset();
        return false;
    }
    wxInitAllImageHandlers();
    auto* frame = new CadrelleFrame(appDir);
    SetTopWindow(frame);
    // Started minimised, the password is asked when the window is restored.
    const bool minimised = frame->Prefs().GetValue("minimizeOnAppStart") == "1";
    if (!minimised && frame->Prefs().GetValue("usePassword") == "1") {
        // Never shown before the password is given, not even for a moment;
        // asked once the loop runs.
        frame->CallAfter([frame] { frame->RestoreMainFrame(true); });
        return true;
    }
    frame->Show();
    if (minimised)
        frame->Iconize(true);
    return true;
}

int CadrelleApp::OnExit()
{
    m_pInstance.reset();
    return wxApp::OnExit();
}

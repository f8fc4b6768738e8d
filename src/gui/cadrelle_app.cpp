#include "gui/cadrelle_app.h"

#include "core/app_dir.h"
#include "gui/main_frame.h"

namespace {
wxString g_appDirOverride;
}

wxIMPLEMENT_APP_NO_MAIN(CadrelleApp);

void CadrelleApp::SetAppDirOverride(const wxString& appDir)
{
    g_appDirOverride = appDir;
}

bool CadrelleApp::OnInit()
{
    SetVendorName("Vantrel");
    SetAppName("Cadrelle");
    auto* frame = new CadrelleFrame(ChooseAppDir(g_appDirOverride, ExecutableDir()));
    frame->Show();
    return true;
}

#pragma once

#include <memory>

#include <wx/app.h>

#include "desktop/single_instance.h"

class CadrelleApp : public wxApp {
public:
    // The --app-dir given on the command line (empty when none).
    static void SetAppDirOverride(const wxString& appDir);

    bool OnInit() override;
    int OnExit() override;

private:
    std::unique_ptr<SingleInstanceGuard> m_pInstance;
};

wxDECLARE_APP(CadrelleApp);

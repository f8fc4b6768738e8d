#pragma once

#include <memory>

#include <wx/app.h>

class CadrelleApp : public wxApp {
public:
    // The --app-dir given on the command line (empty when none).
    static void SetAppDirOverride(const wxString& appDir);

    bool OnInit() override;
    int OnExit() override;
};

wxDECLARE_APP(CadrelleApp);

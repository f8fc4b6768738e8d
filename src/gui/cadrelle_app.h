#pragma once

#include <memory>

#include <wx/app.h>

#include "desktop/single_instance.h"

class CadrelleApp : public wxApp {
public:
    // The --app-dir given on the command line (empty when none).
    static void SetAppDirOverride(const wxString& appDir);

    // The exit status of a start that ended in OnInit, or -1: 0 when another
    // instance runs and was brought forward, 1 when it could not be reached
    // or the instance lock could not be taken.
    static int RefusedStartStatus();

    bool OnInit() override;
    int OnExit() override;

private:
    std::unique_ptr<SingleInstanceGuard> m_pInstance;
};

wxDECLARE_APP(CadrelleApp);

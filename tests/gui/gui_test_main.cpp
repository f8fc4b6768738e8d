// A wxApp whose main loop runs the GoogleTest suite: every test runs inside the real event loop.

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/filename.h>
#include <wx/image.h>
#include <wx/log.h>

namespace {

// Assertion failures of wx become test failures, never dialogs.
void FailOnAssert(const wxString& file, int line, const wxString& func, const wxString& cond, const wxString& msg)
{
    ADD_FAILURE() << "wx assertion " << file << ":" << line << " " << func << ": " << cond << " " << msg;
}

// HOME and the XDG folders point into a private folder before anything reads them.
void UsePrivateHome()
{
    char pattern[] = "/tmp/cadrelle-gui-XXXXXX";
    const char* home = ::mkdtemp(pattern);
    if (!home)
        std::abort();
    const std::string h = home;
    ::setenv("HOME", h.c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (h + "/.config").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (h + "/.local/share").c_str(), 1);
    ::setenv("XDG_CACHE_HOME", (h + "/.cache").c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", (h + "/run").c_str(), 1);
    wxFileName::Mkdir(wxString::FromUTF8((h + "/run").c_str()), 0700, wxPATH_MKDIR_FULL);
}

class GuiTestApp : public wxApp {
public:
    bool OnInit() override
    {
        SetVendorName("Vantrel");
        SetAppName("Cadrelle");
        wxInitAllImageHandlers();
        wxSetAssertHandler(FailOnAssert);
        delete wxLog::SetActiveTarget(new wxLogStderr);
        wxLog::SetLogLevel(wxLOG_Warning);
        CallAfter([this] {
            m_result = RUN_ALL_TESTS();
            ExitMainLoop();
        });
        return true;
    }
    int OnRun() override
    {
        wxApp::OnRun();
        return m_result;
    }

private:
    int m_result = 1;
};

}  // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    UsePrivateHome();
    ::setenv("GDK_BACKEND", "x11", 1);
    wxApp::SetInstance(new GuiTestApp);
    int toolkitArgc = 1;
    char* toolkitArgv[] = {argv[0], nullptr};
    return wxEntry(toolkitArgc, toolkitArgv);
}

#include "gui_test_support.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/filename.h>
#include <wx/image.h>
#include <wx/window.h>

#include "desktop/platform/screen_capture.h"

namespace guitest {

bool WaitFor(const std::function<bool()>& condition, int timeoutMs)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        wxEventLoopBase* loop = wxEventLoopBase::GetActive();
        if (loop)
            loop->YieldFor(wxEVT_CATEGORY_ALL);
        wxMilliSleep(5);
    }
    return true;
}

void Settle()
{
    for (int i = 0; i < 5; ++i) {
        if (wxEventLoopBase* loop = wxEventLoopBase::GetActive())
            loop->YieldFor(wxEVT_CATEGORY_ALL);
        wxTheApp->ProcessIdle();
    }
}

wxString TestHome()
{
    return wxString::FromUTF8(std::getenv("HOME"));
}

wxString FreshAppDir()
{
    static int counter = 0;
    const wxString dir = TestHome() + wxString::Format("/app-%d", ++counter);
    wxFileName::Mkdir(dir, 0700, wxPATH_MKDIR_FULL);
    return dir;
}

wxString SaveScreenshot(wxWindow* window, const wxString& name)
{
    const char* dir = std::getenv("CADRELLE_SCREENSHOT_DIR");
    if (!dir || !*dir || !window)
        return wxString();
    Settle();
    // Read from the X server on a connection of its own (the program's own
    // capture code): title bars of the window manager are part of what the
    // user sees, and a wxScreenDC would disturb the toolkit's repainting.
    const wxRect rect = window->GetScreenRect();
    RgbImage pixels;
    wxString problem;
    if (!CaptureScreen(rect.x, rect.y, rect.width, rect.height, pixels, problem))
        return wxString();
    wxImage image(pixels.width, pixels.height, false);
    std::copy(pixels.rgb.begin(), pixels.rgb.end(), image.GetData());
    const wxString path = wxString::FromUTF8(dir) + "/" + name + ".png";
    wxFileName::Mkdir(wxString::FromUTF8(dir), 0755, wxPATH_MKDIR_FULL);
    return image.SaveFile(path, wxBITMAP_TYPE_PNG) ? path : wxString();
}

wxWindow* FindByName(const wxString& name, wxWindow* parent)
{
    if (parent)
        return wxWindow::FindWindowByName(name, parent);
    for (wxWindow* top : wxTopLevelWindows) {
        if (top->GetName() == name)
            return top;
        if (wxWindow* found = wxWindow::FindWindowByName(name, top))
            return found;
    }
    return nullptr;
}

}  // namespace guitest

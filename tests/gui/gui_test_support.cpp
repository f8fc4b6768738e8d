#include "gui_test_support.h"

#include <chrono>
#include <cstdlib>

#include <wx/app.h>
#include <wx/bitmap.h>
#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/dcscreen.h>
#include <wx/evtloop.h>
#include <wx/filename.h>
#include <wx/image.h>
#include <wx/window.h>

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
    // The screen, not the window's own DC: title bars and child windows of
    // the window manager are part of what the user sees.
    const wxRect rect = window->GetScreenRect();
    wxScreenDC screen;
    wxBitmap bitmap(rect.width, rect.height);
    wxMemoryDC memory(bitmap);
    memory.Blit(0, 0, rect.width, rect.height, &screen, rect.x, rect.y);
    memory.SelectObject(wxNullBitmap);
    const wxString path = wxString::FromUTF8(dir) + "/" + name + ".png";
    wxFileName::Mkdir(wxString::FromUTF8(dir), 0755, wxPATH_MKDIR_FULL);
    return bitmap.ConvertToImage().SaveFile(path, wxBITMAP_TYPE_PNG) ? path : wxString();
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

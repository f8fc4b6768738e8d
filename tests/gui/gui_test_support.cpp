#include "gui_test_support.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/dir.h>
#include <wx/ffile.h>
#include <wx/evtloop.h>
#include <wx/filename.h>
#include <wx/image.h>
#include <wx/utils.h>
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

wxString FreshAppDir()
{
    static int counter = 0;
    const wxString dir = wxGetHomeDir() + wxString::Format("/app-%d", ++counter);
    wxFileName::Mkdir(dir, 0700, wxPATH_MKDIR_FULL);
    return dir;
}

wxString SaveScreenshot(wxWindow* window, const wxString& name)
{
    const char* dir = std::getenv("CADRELLE_SCREENSHOT_DIR");
    if (!dir || !*dir || !window)
        return wxString();
    // After the toolkit has had time to paint.
    WaitFor([window] { return window->IsShownOnScreen(); });
    WaitFor([] { return false; }, 300);
    window->Update();
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

void Fire(wxWindow* control, wxEventType type, int value)
{
    wxCommandEvent event(type, control->GetId());
    event.SetEventObject(control);
    event.SetInt(value);
    control->ProcessWindowEvent(event);
}

wxString ReadText(const wxString& path)
{
    wxString text;
    wxFFile(path, "r").ReadAll(&text);
    return text;
}

wxString LogText(const wxString& appDir)
{
    wxArrayString files;
    wxDir::GetAllFiles(appDir, &files, "log_*.txt", wxDIR_FILES);
    wxString text;
    for (const wxString& file : files)
        text += ReadText(file);
    return text;
}

wxString JobXml(int jid, int kind, const char* desc, bool enabled, int tid, const char* info)
{
    return wxString::Format("<JOB><ID>%d</ID><TYPE>%d</TYPE><DESC>%s</DESC><ENABLE>%d</ENABLE><JINTERVAL>0"
                            "</JINTERVAL><TID>%d</TID><JID></JID><INFO>%s</INFO></JOB>\n",
                            jid, kind, desc, enabled ? 1 : 0, tid, info);
}

wxString TriggerXml(int tid, int kind, const char* condition)
{
    return wxString::Format("<TRIGGER><ID>%d</ID><TYPE>%d</TYPE><CONDITION>%s</CONDITION><PREVFIRE>0 0 0 1 1 * "
                            "1999</PREVFIRE><NEXTFIRE>0 0 0 1 1 * 1999</NEXTFIRE><START>0 0 0 1 1 * 1999</START>"
                            "<END>59 59 23 31 12 * 2999</END></TRIGGER>\n",
                            tid, kind, condition);
}

void WriteData(const wxString& appDir, const wxString& items)
{
    wxFileName::Mkdir(appDir + "/data", 0700, wxPATH_MKDIR_FULL);
    wxFFile(appDir + "/data/data1.xml", "w")
        .Write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SCHEDULER>\n" + items + "</SCHEDULER>\n");
}

int ExpectMessage::OnInvoked(wxMessageDialog* dlg) const
{
    const wxString text = dlg->GetMessage();
    EXPECT_EQ(dlg->GetCaption(), m_caption);
    if (m_part)
        EXPECT_TRUE(text.Contains(m_text)) << text;
    else
        EXPECT_EQ(text, m_text);
    if (m_seen)
        *m_seen = true;
    return wxExpectModal<wxMessageDialog>::OnInvoked(dlg);
}

}  // namespace guitest

#include "gui/message_window.h"

#include <wx/button.h>
#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

namespace {
// Windows opened while others are still up step down and to the right, so
// that none hides another.
constexpr int kCascadeStep = 28;
int g_openWindows = 0;
constexpr int kTextWrapWidth = 420;
// Wide enough that the title bar shows the whole title.
constexpr int kMinWidth = 360;
}  // namespace

MessageWindow* MessageWindow::Open(const wxString& title, const wxString& text)
{
    auto* window = new MessageWindow(title, text);
    window->Show();
    window->Raise();
    return window;
}

MessageWindow::MessageWindow(const wxString& title, const wxString& text)
    : wxFrame(nullptr, wxID_ANY, title, wxDefaultPosition, wxDefaultSize,
              (wxDEFAULT_FRAME_STYLE & ~(wxRESIZE_BORDER | wxMAXIMIZE_BOX)) | wxSTAY_ON_TOP),
      m_text(text)
{
    auto* panel = new wxPanel(this);
    auto* label = new wxStaticText(panel, wxID_ANY, text);
    label->Wrap(kTextWrapWidth);
    auto* ok = new wxButton(panel, wxID_OK);
    ok->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Close(); });

    auto* sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(label, 1, wxALL | wxEXPAND, 16);
    sizer->Add(ok, 0, wxALL | wxALIGN_RIGHT, 10);
    panel->SetSizer(sizer);
    sizer->SetMinSize(kMinWidth, -1);
    sizer->SetSizeHints(this);
    ok->SetDefault();
    ok->SetFocus();
    Centre();
    const int step = kCascadeStep * (g_openWindows++ % 8);
    Move(GetPosition() + wxPoint(step, step));
    Bind(wxEVT_DESTROY, [this](wxWindowDestroyEvent& event) {
        if (event.GetEventObject() == this)
            --g_openWindows;
        event.Skip();
    });
}

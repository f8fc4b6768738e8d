#include "gui/shell/notice_window.h"

#include <set>

#include <wx/button.h>
#include <wx/display.h>
#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

namespace {

// The slots taken by open notices: slot 0 sits in the bottom right corner of
// the screen, each further one just above the previous.
std::set<int> g_takenSlots;
constexpr int kMargin = 12;
constexpr int kGap = 8;
constexpr int kTextWrapWidth = 380;

}  // namespace

wxString NoticeWindow::NoticeText(std::int32_t jid, const wxString& typeName)
{
    return _("The following job will be run in 5 minutes later, please take an action.\n\n") + _("\nJob Detail:\n") +
           wxString::Format(_("Job ID: %d\tJob Type: "), static_cast<int>(jid)) + typeName;
}

NoticeWindow* NoticeWindow::Open(std::int32_t jid, const wxString& typeName, Actions actions)
{
    auto* window = new NoticeWindow(jid, typeName, std::move(actions));
    window->ShowWithoutActivating();
    return window;
}

NoticeWindow::NoticeWindow(std::int32_t jid, const wxString& typeName, Actions actions)
    : wxFrame(nullptr, wxID_ANY, "Cadrelle", wxDefaultPosition, wxDefaultSize,
              wxCAPTION | wxCLOSE_BOX | wxSTAY_ON_TOP | wxFRAME_NO_TASKBAR | wxFRAME_TOOL_WINDOW),
      m_nJid(jid), m_text(NoticeText(jid, typeName)), m_actions(std::move(actions))
{
    SetName("NoticeWindow");
    auto* panel = new wxPanel(this);
    auto* label = new wxStaticText(panel, wxID_ANY, m_text);
    label->SetName("noticeText");
    label->Wrap(kTextWrapWidth);

    auto* disable = new wxButton(panel, wxID_ANY, _("Disable"), wxDefaultPosition, wxDefaultSize, 0,
                                 wxDefaultValidator, "noticeDisable");
    disable->SetToolTip(_("Disable this job."));
    auto* edit = new wxButton(panel, wxID_ANY, _("Edit.."), wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator,
                              "noticeEdit");
    edit->SetToolTip(_("Edit this job's trigger time."));
    auto* gotIt = new wxButton(panel, wxID_ANY, _("Got it"), wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator,
                               "noticeGotIt");
    gotIt->SetToolTip(_("Got it and close this window."));

    // The window goes first: an action may open a modal dialog or end the
    // program, and this notice must not linger over it.
    disable->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) {
        const auto action = m_actions.disable;
        const std::int32_t jid = m_nJid;
        Close(true);
        if (action)
            action(jid);
    });
    edit->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) {
        const auto action = m_actions.edit;
        const std::int32_t jid = m_nJid;
        Close(true);
        if (action)
            action(jid);
    });
    gotIt->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Close(true); });

    auto* buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(disable, 0, wxRIGHT, 6);
    buttons->Add(edit, 0, wxRIGHT, 6);
    buttons->Add(gotIt, 0);
    auto* sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(label, 1, wxALL | wxEXPAND, 14);
    sizer->Add(buttons, 0, wxLEFT | wxRIGHT | wxBOTTOM | wxALIGN_RIGHT, 10);
    panel->SetSizer(sizer);
    sizer->SetSizeHints(this);
    PlaceInFreeSlot();
}

NoticeWindow::~NoticeWindow()
{
    g_takenSlots.erase(m_nSlot);
}

void NoticeWindow::PlaceInFreeSlot()
{
    while (g_takenSlots.count(m_nSlot) != 0)
        ++m_nSlot;
    g_takenSlots.insert(m_nSlot);
    const wxRect area = wxDisplay(static_cast<unsigned>(0)).GetClientArea();
    const wxSize size = GetSize();
    // Window decorations are not part of GetSize() on X11 before mapping;
    // a generous gap keeps the title bars apart.
    const int step = size.GetHeight() + kGap + 32;
    const int rows = std::max(1, (area.GetHeight() - kMargin) / step);
    const int column = m_nSlot / rows;
    const int row = m_nSlot % rows;
    const int x = area.GetRight() - kMargin - size.GetWidth() - column * (size.GetWidth() + kGap);
    const int y = area.GetBottom() - kMargin - size.GetHeight() - row * step;
    Move(std::max(area.GetLeft(), x), std::max(area.GetTop(), y));
}

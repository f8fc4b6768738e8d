#include "gui/shell/desktop_shell.h"

// Placeholder until hot keys and the tray land: no tray, so the window is
// never hidden.
DesktopShell::DesktopShell(CadrelleFrame& frame) : m_frame(frame) {}
DesktopShell::~DesktopShell() = default;
void DesktopShell::OnIconize(bool) {}
bool DesktopShell::CanHideWindow() const { return false; }
void DesktopShell::RemoveTrayIcon() {}
void DesktopShell::ShowBalloon(const wxString&, const wxString&) {}
void DesktopShell::ShowAdvanceNotice(std::int32_t) {}
std::array<wxString, 5> DesktopShell::HotKeyStates() const { return {}; }
wxString DesktopShell::TrayNote() const { return "not available yet"; }

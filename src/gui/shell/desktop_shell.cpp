#include "gui/shell/desktop_shell.h"

#include <algorithm>
#include <iterator>

#include <wx/app.h>
#include <wx/log.h>
#include <wx/msgdlg.h>

#include "core/core_log.h"
#include "core/prefs/preference.h"
#include "core/scheduler.h"
#include "desktop/control/control_server.h"
#include "desktop/control/instance_control.h"
#include "desktop/hotkey_plan.h"
#include "desktop/session/app_session.h"
#include "gui/main_frame.h"
#include "gui/shell/global_hotkeys.h"
#include "gui/shell/notice_window.h"
#include "gui/shell/portal_shortcuts.h"
#include "gui/shell/tray_icon.h"

namespace {

// The hot keys' names at the desktop portal, which keeps the user's choice
// of keys under them: never change them.
constexpr const char* kPortalIds[kHotKeyCount] = {"restore", "pause", "custom1", "custom2", "custom3"};

wxString PortalDescription(HotKeyId id)
{
    switch (id) {
    case HotKeyId::RestoreMainFrame: return _("Show the Cadrelle window");
    case HotKeyId::PauseMode: return _("Switch Cadrelle's pause mode on or off");
    default: return wxString::Format(_("Run the job of Cadrelle's custom hot key %d"), static_cast<int>(id) - 1);
    }
}

// The window's side of the command-line control: the frame's own commands,
// without their message boxes.
class FrameControl final : public InstanceControl {
public:
    explicit FrameControl(CadrelleFrame& frame) : m_frame(frame) {}
    InstanceStatus Status() override
    {
        return CollectStatus(m_frame.GetScheduler(), m_frame.GetEngine(), &m_frame.Session().History());
    }
    bool SetPaused(bool paused) override
    {
        m_frame.SetPauseMode(paused);
        return true;
    }
    void SetSilent(bool silent) override { m_frame.SetSilentMode(silent); }
    bool Run(std::int32_t jid) override { return m_frame.ExecuteJobById(jid, RunOrigin::CommandLine); }
    bool Show() override
    {
        // Answered at once: the password dialog may stay up for long.
        m_frame.CallAfter([frame = &m_frame] { frame->RestoreMainFrame(); });
        return true;
    }

private:
    CadrelleFrame& m_frame;
};

}  // namespace

DesktopShell::DesktopShell(CadrelleFrame& frame) : m_frame(frame)
{
    RegisterHotKeys();
    CreateTray();
    StartControl();
}

wxString DesktopShell::Pref(const char* key) const
{
    return m_frame.Prefs().GetValue(key);
}

DesktopShell::~DesktopShell()
{
    *m_pAlive = false;
    m_pServer.reset();
    m_pPortal.reset();
    m_pHotKeys.reset();
    m_pTray.reset();
}

void DesktopShell::RegisterHotKeys()
{
    if (!PortalShortcuts::WaylandSession())
        return GrabHotKeys(false);
    // The portal binds nothing by itself: the desktop may first ask the user,
    // who may choose other keys. Ours are only the preferred ones.
    std::vector<PortalShortcuts::Shortcut> shortcuts;
    for (const HotKeySpec& spec : HotKeySpecs())
        shortcuts.push_back({kPortalIds[static_cast<int>(spec.id)], PortalDescription(spec.id),
                             PortalTrigger(BindingFromValues(Pref(spec.modifierKey), Pref(spec.keyKey)))});
    m_hotKeyStates.fill(_("waiting for the desktop portal"));
    auto done = [this](const PortalShortcuts::Result& result) {
        using Outcome = PortalShortcuts::Outcome;
        if (result.outcome == Outcome::Unavailable) {
            wxLogMessage("%d ### No global shortcuts from the desktop portal: %s", LogMs(), result.reason);
            return GrabHotKeys(true);
        }
        for (int i = 0; i < kHotKeyCount; ++i)
            m_hotKeyStates[static_cast<std::size_t>(i)] =
                result.outcome == Outcome::Refused ? _("refused in the desktop portal")
                : result.bound.count(kPortalIds[i]) ? _("registered through the desktop portal")
                                                    : _("not bound by the desktop portal");
        if (result.outcome == Outcome::Refused)
            wxLogMessage("%d ### The desktop portal bound no global hot keys (%s); bind `cadrelle --pause`, `cadrelle "
                         "--show` or `cadrelle --run JID` to keys in the desktop's keyboard settings",
                         LogMs(), result.reason);
        else
            wxLogMessage("%d ### Global hot keys through the desktop portal: %zu of %d bound", LogMs(),
                         result.bound.size(), kHotKeyCount);
    };
    m_pPortal = std::make_unique<PortalShortcuts>(std::move(shortcuts), done,
                                                  [this](const std::string& id) { OnPortalActivated(id); });
}

void DesktopShell::OnPortalActivated(const std::string& id)
{
    const auto found = std::find(std::begin(kPortalIds), std::end(kPortalIds), id);
    if (found == std::end(kPortalIds))
        return;
    const auto index = static_cast<std::size_t>(found - std::begin(kPortalIds));
    // A custom key is told apart by its stored key code, as on X11.
    long virtualKey = 0;
    Pref(HotKeySpecs()[index].keyKey).ToLong(&virtualKey);
    OnHotKey(static_cast<int>(index), static_cast<int>(virtualKey));
}

void DesktopShell::GrabHotKeys(bool wayland)
{
    if (!GlobalHotKeys::Available()) {
        // Said once; the command line works everywhere and can be bound to a
        // key in the desktop's own keyboard settings.
        m_hotKeyStates.fill(_("not available in this session"));
        wxLogMessage("%d ### Global hot keys are not available in this session (no X11 display); bind `cadrelle "
                     "--pause`, `cadrelle --show` or `cadrelle --run JID` to keys in the desktop's keyboard settings",
                     LogMs());
        return;
    }
    // On a Wayland desktop the window runs on XWayland: its grabs see the
    // keys only while an X11 window has the focus.
    if (wayland)
        wxLogMessage("%d ### Wayland session: the global hot keys work only while an X11 window has the focus; bind "
                     "`cadrelle --pause`, `cadrelle --show` or `cadrelle --run JID` to keys in the desktop's keyboard "
                     "settings",
                     LogMs());
    m_pHotKeys = std::make_unique<GlobalHotKeys>([this](int id, int virtualKey) { OnHotKey(id, virtualKey); });
    wxString failures;
    for (const HotKeySpec& spec : HotKeySpecs()) {
        const int index = static_cast<int>(spec.id);
        const wxString modifier = Pref(spec.modifierKey);
        const GlobalHotKeys::Result result =
            m_pHotKeys->Register(index, BindingFromValues(modifier, Pref(spec.keyKey)));
        if (result == GlobalHotKeys::Result::Ok) {
            m_hotKeyStates[static_cast<std::size_t>(index)] =
                wayland ? _("registered, X11 windows only (Wayland session)") : _("registered");
            continue;
        }
        m_hotKeyStates[static_cast<std::size_t>(index)] =
            result == GlobalHotKeys::Result::Taken ? _("held by another program") : _("not a usable key");
        const wxString text = HotKeyFailureText(spec.id, modifier);
        wxLogMessage("%d ### %s", LogMs(), text);
        failures += (failures.empty() ? "" : "\n\n") + text;
    }
    // Shown once the window is up, in one box rather than five.
    if (!failures.empty()) {
        m_frame.CallAfter([failures, alive = m_pAlive] {
            if (*alive)
                wxMessageBox(failures, "Cadrelle", wxOK | wxICON_WARNING);
        });
    }
}

void DesktopShell::OnHotKey(int id, int virtualKey)
{
    // Acted on from the event loop, outside the X event filter: the actions
    // may open dialogs.
    m_frame.CallAfter([this, id, virtualKey, alive = m_pAlive] {
        if (!*alive)
            return;
        switch (static_cast<HotKeyId>(id)) {
        case HotKeyId::RestoreMainFrame:
            m_frame.RestoreMainFrame();
            return;
        case HotKeyId::PauseMode:
            wxLogMessage("%d *** CadrelleFrame::OnHotKeyPause", LogMs());
            m_frame.SwitchPauseMode();
            return;
        default:
            break;
        }
        wxLogMessage("%d *** CadrelleFrame::OnHotKeyCust - KeyCode: %d", LogMs(), virtualKey);
        const int index = CustomKeyIndex(virtualKey, {Pref("hotkeyCust13"), Pref("hotkeyCust23"), Pref("hotkeyCust33")});
        long jid = -1;
        const bool known = index >= 0 && Pref(HotKeySpecs()[static_cast<std::size_t>(2 + index)].jidKey).ToLong(&jid);
        // A JID that no longer exists runs nothing (never some other job).
        if (!known || !m_frame.ExecuteJobById(static_cast<std::int32_t>(jid), RunOrigin::HotKey))
            wxMessageBox(_("Execute Customize HOTKEY failed."), "Cadrelle", wxOK | wxICON_ERROR);
    });
}

void DesktopShell::CreateTray()
{
    // Start-up does not wait for the session bus: until the answer comes the
    // window behaves as in a session without a tray.
    TrayIcon::FindHost([this, alive = m_pAlive](TrayIcon::Host host) {
        if (!*alive)
            return;
        TrayIcon::Actions actions;
        actions.show = [this] { m_frame.CallAfter([frame = &m_frame] { frame->RestoreMainFrame(); }); };
        actions.about = [this] {
            m_frame.CallAfter([frame = &m_frame] {
                wxCommandEvent event(wxEVT_MENU, wxID_ABOUT);
                frame->OnAbout(event);
            });
        };
        actions.exit = [this] { m_frame.CallAfter([frame = &m_frame] { frame->TrayExit(); }); };
        m_pTray = TrayIcon::Create(host, m_frame.GetIcons(), std::move(actions), &m_trayNote);
        if (!m_pTray) {
            wxLogMessage("%d ### %s", LogMs(), m_trayNote);
            return;
        }
        wxLogMessage("%d ### Tray icon: %s", LogMs(), m_pTray->Kind());
        // Minimised before the answer came: the hideTrayIcon rule applies now.
        if (m_frame.IsIconized())
            OnIconize(true);
    });
}

void DesktopShell::StartControl()
{
    m_pControl = std::make_unique<FrameControl>(m_frame);
    auto handler = [this, alive = m_pAlive](const ControlRequest& request) {
        if (!*alive)
            return ControlAnswer{kControlExitFailed, "", std::string(_("Cadrelle is ending.\n").utf8_str())};
        return ServeControlRequest(*m_pControl, request);
    };
    auto poster = [frame = &m_frame](std::function<void()> task) { frame->CallAfter(std::move(task)); };
    m_pServer = std::make_unique<ControlServer>(handler, poster);
    std::string error;
    if (!m_pServer->Start(&error)) {
        wxLogMessage("%d ### No control from the command line: %s", LogMs(), wxString::FromUTF8(error));
        m_pServer.reset();
    }
}

void DesktopShell::OnIconize(bool minimised)
{
    if (!m_pTray)
        return;
    if (minimised && Pref("hideTrayIcon") == "1")
        m_pTray->SetVisible(false);
    else
        m_pTray->SetVisible(true);
}

bool DesktopShell::CanHideWindow() const
{
    return m_pTray != nullptr;
}

void DesktopShell::RemoveTrayIcon()
{
    if (m_pTray)
        m_pTray->SetVisible(false);
}

void DesktopShell::ShowAdvanceNotice(std::int32_t jid)
{
    if (Pref("hideNotifyWnd") == "1")
        return;
    wxString typeName;
    {
        Scheduler& scheduler = m_frame.GetScheduler();
        const auto lock = scheduler.ReadLock();
        const auto job = scheduler.GetJobById(jid);
        if (!job)
            return;
        typeName = job->GetTypeName();
    }
    NoticeWindow::Actions actions;
    actions.disable = [frame = &m_frame, alive = m_pAlive](std::int32_t id) {
        if (!*alive)
            return;
        const auto job = frame->GetScheduler().GetJobById(id);
        // Disable only: a job enabled again meanwhile stays as it is asked.
        if (job && job->IsEnabled())
            frame->ToggleJobEnable(id);
    };
    actions.edit = [frame = &m_frame, alive = m_pAlive](std::int32_t id) {
        if (*alive)
            frame->OpenTriggerDialogForJob(id);
    };
    NoticeWindow::Open(jid, typeName, std::move(actions));
}

std::array<wxString, 5> DesktopShell::HotKeyStates() const
{
    return m_hotKeyStates;
}

wxString DesktopShell::TrayNote() const
{
    return m_trayNote;
}

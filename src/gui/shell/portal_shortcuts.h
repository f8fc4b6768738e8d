#pragma once
// Global shortcuts through the desktop portal, for Wayland sessions where no
// program may grab keys itself: a session with the portal, the shortcuts
// bound in it, and their activations. Every call is asynchronous (the desktop
// may ask the user first); everything runs on the main thread, whose GLib
// loop delivers the bus's answers.

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <wx/string.h>

class PortalShortcuts {
public:
    struct Shortcut {
        std::string id;        // stable across runs: the desktop keeps its choice under it
        wxString description;  // shown in the desktop's dialog
        std::string trigger;   // preferred trigger ("CTRL+SHIFT+9"), may be empty
    };
    // Unavailable: the bus offers no portal with global shortcuts.
    // Refused: the user cancelled, or the portal ended the request.
    enum class Outcome { Bound, Refused, Unavailable };
    struct Result {
        Outcome outcome = Outcome::Unavailable;
        std::set<std::string> bound;  // ids the desktop bound
        wxString reason;              // why not, for the log
    };
    using Done = std::function<void(const Result&)>;
    using Activated = std::function<void(const std::string& id)>;

    // Starts at once; `done` is called once, later, from the event loop.
    PortalShortcuts(std::vector<Shortcut> shortcuts, Done done, Activated activated);
    // Closes the session; no callback is made after this.
    ~PortalShortcuts();
    PortalShortcuts(const PortalShortcuts&) = delete;
    PortalShortcuts& operator=(const PortalShortcuts&) = delete;

    // True when the desktop session is a Wayland one.
    static bool WaylandSession();

private:
    struct State;
    std::unique_ptr<State> m_pState;
};

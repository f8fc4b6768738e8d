#include "desktop/session/session_end.h"

#include <csignal>
#include <cstdlib>

#include <X11/Xlib.h>
#include <glib-unix.h>
#include <unistd.h>

namespace {

std::function<void(int)> g_onSignal;
std::function<void()> g_onDisplayLost;
guint g_sources[3] = {0, 0, 0};

gboolean OnSignalSource(gpointer data)
{
    const int signal = GPOINTER_TO_INT(data);
    if (g_onSignal)
        g_onSignal(signal);
    return G_SOURCE_CONTINUE;
}

int OnXIOError(Display*)
{
    // Xlib ends the process when this returns: the session is saved first.
    static bool inside = false;
    if (!inside) {
        inside = true;
        if (g_onDisplayLost)
            g_onDisplayLost();
    }
    std::fflush(nullptr);
    ::_exit(0);
    return 0;
}

}  // namespace

void WatchStopSignals(std::function<void(int)> onSignal)
{
    g_onSignal = std::move(onSignal);
    const int signals[3] = {SIGTERM, SIGINT, SIGHUP};
    for (int i = 0; i < 3; ++i) {
        if (g_sources[i] != 0)
            g_source_remove(g_sources[i]);
        g_sources[i] = 0;
        // Without a callback the default action (ending the process) is back.
        if (g_onSignal)
            g_sources[i] = g_unix_signal_add(signals[i], OnSignalSource, GINT_TO_POINTER(signals[i]));
    }
}

void WatchDisplayLoss(std::function<void()> onLost)
{
    g_onDisplayLost = std::move(onLost);
    XSetIOErrorHandler(OnXIOError);
}

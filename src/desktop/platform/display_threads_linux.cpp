#include "desktop/platform/display_threads.h"

#include <X11/Xlib.h>

void EnableDisplayThreads()
{
    XInitThreads();
}

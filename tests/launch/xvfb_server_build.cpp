// The private X server of the desktop tests, built into this program too: the
// graphical launches check that a display answers.
#include "xvfb_server.cpp"

// The private X server helper lives with the desktop tests; this program
// builds its own copy for the display power tests.
#include "xvfb_server.cpp"

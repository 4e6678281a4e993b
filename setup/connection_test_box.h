// A connection test that a person asked for in a dialog. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <string>

// Tries the connection string (setup/connection_test.h) while the pointer over the window of `parent` is a watch, then
// shows the outcome in a box over it: all that driver and driver manager say, scrolling where it is much. The string is
// wiped.
void testConnectionFor(Widget parent, std::string connectionString);

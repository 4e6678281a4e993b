// A connection test that a person asked for in a dialog. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <string>

#include "setup/connection_test.h"

// Tries the connection while a box over `parent` tells the seconds. It ends after half a minute, unless the person
// waits on, or at once when the person cancels it. Then a box shows the outcome: all that driver and driver manager
// say, scrolling where it is much. `library` is the driver's.
void testConnectionFor(Widget parent, const ConnectionTest& test, const std::string& library);

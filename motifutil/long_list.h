// A list of many rows, in sight as far as the scrolled window around it shows it. Motif's own draws all of them
// whenever a box goes that covered one, which with a thousand takes longer than all else that is done then. GUI thread
// only.
#pragma once

#include <Xm/Xm.h>

#include <functional>

// The class of lists that draw the rows which are exposed. In all else, and in resource files, it is XmList.
WidgetClass longListClass();

// Does what inserts or deletes rows of a list without drawing any; its height is to change then, for which all that is
// in sight is exposed.
void changeUndrawn(Widget list, const std::function<void()>& change);

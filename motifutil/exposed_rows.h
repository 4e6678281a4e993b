// Lists of many rows in a scrolled window, which are as high as all of them. Motif's own draw all their rows, in sight
// or not, whenever a box goes that covered one: with a thousand that takes longer than all else that is done then. GUI
// thread only.
#pragma once

#include <Xm/Xm.h>

#include <functional>

// The class of lists that draw the rows which are exposed. In all else, and in resource files, it is XmList.
WidgetClass exposedRowsListClass();

// Does what inserts or deletes rows of a list, for each of which Motif draws all that the list shows. Here it is told
// that none is shown, which XmNvisibleItemCount can't say. Then set that to another number than it had: the new height
// exposes what is in sight.
void changeUndrawn(Widget list, const std::function<void()>& change);

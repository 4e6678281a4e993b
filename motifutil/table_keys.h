// The keys of a table, which Motif's lists lack: Page Up, Page Down, Home, End, with Ctrl too, select the row that they
// lead to, and letters the next row whose text begins with them. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// Makes them work in a list, one that scrolls itself or one in a window made by createScrolledWindow, which the arrow
// keys then scroll sideways. Call it before the list is realized. A row that is a path goes by its name.
void addTableKeys(Widget list);

// The window made by createScrolledWindow that a list stands in; null when it stands in none.
Widget scrolledWindowAround(Widget list);

// The size of the main window: the one it begins with, and the least one in which nothing of it overlaps or is cut off.
// GUI thread only.
#pragma once

#include <Xm/Xm.h>

// Gives the tables on the pages of the notebook, and the box of a page whose lists hold files, the sizes from which
// that of the window follows. Call it when the tables are filled and before the window is realized.
void askForFirstSize(Widget notebook, Widget fileSelection);

// Tells the window manager the least size of the window, whose first page is in front, from what its pages can spare.
void setLeastSize(Widget shell, Widget notebook, Widget fileSelection);

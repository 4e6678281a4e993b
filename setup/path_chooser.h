// Choosing the file that a setting names. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// Lets the person choose a file; its path then replaces the text of `field` (XmTextField), whose own path is where the
// dialog begins. Escape and the window manager's close leave the field alone. Full application modal over `field`'s
// window; returns at once. `field` must outlive the dialog, as a parent does.
void choosePath(Widget field);

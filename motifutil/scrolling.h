// What Motif's scrolled windows leave to the program: fitting what is in them to the window, and the mouse wheel. For
// windows made by createScrolledWindow. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// The width, or height, in pixels that the work area can have without a scroll bar in that direction.
int viewWidth(Widget scrolledWindow);
int viewHeight(Widget scrolledWindow);

// Lets the mouse wheel scroll the window while the pointer is over `child`, which the wheel would not pass through.
void scrollWithWheel(Widget scrolledWindow, Widget child);
// How far a notch of the wheel scrolls it from now on; 0 for as far as at first. It is kept as the scroll bar's user
// data.
void setWheelStep(Widget scrolledWindow, int pixels);

// Scrolls the window to where its work area is cut off above by so many pixels.
void scrollDownTo(Widget scrolledWindow, int value);

// Scrolls the window vertically as far as it takes to show the part of its work area between two heights, in pixels;
// the lower end wins when both do not fit.
void revealRange(Widget scrolledWindow, int top, int bottom);

// Scrolls the window sideways by a step, to the left (-1) or to the right (1).
void scrollSideways(Widget scrolledWindow, int direction);

// The size of letters, by which all that belongs to them goes. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// So many pixels of a screen with 96 dots per inch, for the size that the letters of this widget's window have.
int scaled(Widget widget, int pixels);

// So many pixels as long as a line of text is no higher, else as scaled() says.
int roomForLine(Widget widget, int pixels);

// The size of letters, by which all that belongs to them goes. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// So many pixels of a screen with 96 dots per inch, for the size that the letters of this widget's window have.
int scaled(Widget widget, int pixels);

// Gives a label smaller letters when a line of its text is higher than so many pixels.
void fitLetters(Widget label, int height);

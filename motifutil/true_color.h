// Colours without asking the server: on the visuals of today a pixel is made of the parts of its colour, at places that
// the server tells when it is connected (X11 protocol, "Visual information", TrueColor).
#pragma once

#include <X11/Xlib.h>

// Whether it is so: not on another kind of visual, nor for another colormap than that of the screen.
bool isTrueColor(Display* connection, Colormap colormap);

// Sets the pixel of a colour from its parts. False, with nothing done, where only the server can tell.
bool setPixel(Display* connection, Colormap colormap, XColor& colour);

// The other way round: the parts from the pixel.
bool setColour(Display* connection, Colormap colormap, XColor& colour);

// Colours without asking the server: on the visuals of today a pixel is made of the parts of its colour, at places that
// the server tells when it is connected (X11 protocol, "Visual information", TrueColor).
#pragma once

#include <Xm/Screen.h>
#include <Xm/Xm.h>

// Sets the pixel of a colour from its parts. False, with nothing done, where only the server can tell: on another kind
// of visual, or for another colormap than that of the screen.
bool setPixel(Display* connection, Colormap colormap, XColor& colour);

// Lets Xt and Motif, on this display, work out their colours so where that is possible: a window has dozens, each of
// which would wait for the server. Call it before the first window is made.
void workOutColours(XtAppContext context, Display* connection);

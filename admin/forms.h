// Screens of the wizard dialog, shown and hidden by their place in it. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// Puts the form at the top left of its parent, 440 by 300 pixels. Screens are moved rather than managed and unmanaged,
// so that the dialog keeps its size from screen to screen.
void show_Form(Widget form);
// Shrinks the form to 5 by 5 pixels outside the visible area.
void hide_Form(Widget form);

// The look of every window of the process, setup dialogs included.
#pragma once

#include <X11/Intrinsic.h>

// Sets the resources that hold where the user's own say nothing else. Call it before the display is opened.
void setFallbackLook(XtAppContext context);

// Gives the window of this shell, and every dialog over it, the font of the look. A resource that names it for each
// widget would be converted for each, and Xt keeps all that it ever converted.
void setFont(Widget shell);

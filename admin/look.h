// The look of every window of the process, setup dialogs included.
#pragma once

#include <X11/Intrinsic.h>

// Sets the resources that hold where the user's own say nothing else. Call it before the display is opened.
void setFallbackLook(XtAppContext context);

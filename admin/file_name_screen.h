// The File DSN wizard's second screen: the name of the file. GUI thread only.
#pragma once

#include <Xm/Xm.h>

extern Widget FormScr2;
// The field for the name.
extern Widget Text7;

// Builds FormScr2 in `parent`; `browse` is what the button beside the field does.
void createFileNameScreen(Widget parent, XtCallbackProc browse);

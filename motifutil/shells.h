// What every window owes the window manager. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// Readies a shell that was just made. Closing it by the window manager calls `closed` and nothing else: by default
// Motif would destroy a main shell and unmap a dialog, and whoever waits for the dialog would wait for ever (ICCCM,
// WM_DELETE_WINDOW). Its title is told in UTF-8 (_NET_WM_NAME, Extended Window Manager Hints) as well as in the
// locale's encoding.
void prepareShell(Widget shell, XtCallbackProc closed, XtPointer clientData);

// The shell that a widget is in.
[[nodiscard]] Widget shellOf(Widget widget);

// Tells the title in UTF-8 of a shell that is realized; those that pop up do it themselves.
void publishTitle(Widget shell);

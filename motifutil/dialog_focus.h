// The keyboard for dialogs where no window manager gives it to them: there it would stay with the window under the
// pointer, which a modal dialog locks. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// Without a window manager, gives the keyboard to a dialog, named by its shell, whenever it comes up, and back to the
// window that had it when it goes.
void holdKeyboard(Widget dialogShell);

// What the desktop shows of the main window and keeps of the program: its icon, and how to start it again. GUI thread
// only.
#pragma once

#include <Xm/Xm.h>

#include <string>
#include <vector>

// Gives a realized shell its icon, when the program has nothing else to do: the pixmap that some window managers take,
// and what taskbars show, in the sizes that they ask for (_NET_WM_ICON, Extended Window Manager Hints). The shell must
// live until then.
void publishIcon(Widget shell);

// Lets session managers start the program again (ICCCM, WM_COMMAND and WM_SAVE_YOURSELF) with the arguments that it was
// started with; `command` begins with a program that can be found from anywhere. For a realized shell.
void publishRestartCommand(Widget shell, std::vector<std::string> command);

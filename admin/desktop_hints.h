// What the desktop shows of the main window and keeps of the program: its icon, and how to start it again. GUI thread
// only.
#pragma once

#include <Xm/Xm.h>

#include <string>
#include <vector>

// Gives a shell that is not realized yet its icon for window managers that take a pixmap.
void setIconPixmap(Widget shell);

// Gives a realized shell the icon that taskbars show, in the sizes that they ask for (_NET_WM_ICON, Extended Window
// Manager Hints).
void publishIcon(Widget shell);

// Lets session managers start the program again (ICCCM, WM_COMMAND and WM_SAVE_YOURSELF) with the arguments that it was
// started with; `command` begins with a program that can be found from anywhere. For a realized shell.
void publishRestartCommand(Widget shell, std::vector<std::string> command);

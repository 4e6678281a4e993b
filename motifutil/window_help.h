// F1 in dialogs. The help book lies above this folder, so whoever runs the windows says how a topic is shown. GUI
// thread only.
#pragma once

#include <Xm/Xm.h>

// Shows a topic of the help book; null until the program, or the setup library, sets it.
extern void (*showHelpTopic)(const char* topic);

// Makes F1 show `topic`, which must stay, wherever the keyboard is in a dialog, in the place of the topic it had.
void setHelpTopic(Widget dialogBox, const char* topic);

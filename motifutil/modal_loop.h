// The nested event loop that holds a caller until its dialog is finished. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// The shell for which the loop runs; null when none runs.
extern Widget current_shell;
// Set to end the loop.
extern unsigned char loop_done;

// Dispatches events until exit_dialog_loop() is called from one of their callbacks. Loops never nest: while one runs, a
// second call returns at once.
void dialog_main_loop(Widget shell);

// Asks the running loop, if any, to end once the present callback has returned. Outside of a callback, in a timer say,
// the loop notices it with the next X event only.
void exit_dialog_loop();

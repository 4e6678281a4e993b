#include "motifutil/modal_loop.h"

Widget current_shell = nullptr;
unsigned char loop_done = 0;

void dialog_main_loop(Widget shell) {
    if (current_shell != nullptr) {
        return;
    }
    loop_done = 0;
    current_shell = shell;
    XtAppContext context = XtWidgetToApplicationContext(shell);
    while (loop_done == 0) {
        XEvent event;
        XtAppNextEvent(context, &event);
        XtDispatchEvent(&event);
    }
    loop_done = 1;
    current_shell = nullptr;
}

void exit_dialog_loop() {
    if (current_shell != nullptr) {
        loop_done = 1;
    }
}

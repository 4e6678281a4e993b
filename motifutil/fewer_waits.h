// Keeps the toolkit from waiting for the X server's answer where there is no need to: over a line of 50 ms a round trip
// each wait is that long. In a program that is linked with this some functions of Xlib are replaced by its own, which
// know the answers: those that allocate, query and free single colours, and XGetKeyboardMapping(). GUI thread only.
#pragma once

#include <X11/Xlib.h>

// Asks for all atoms that the program and the toolkit will ask for, at once; Xlib remembers them.
void internAtoms(Display* connection);

// Asks for the whole keyboard at once. As long as this object lives XGetKeyboardMapping() answers for single keys from
// that; Motif asks for some 35 of them when it is first used.
class KeyboardAtOnce {
public:
    explicit KeyboardAtOnce(Display* connection);
    ~KeyboardAtOnce();
    KeyboardAtOnce(const KeyboardAtOnce&) = delete;
    KeyboardAtOnce& operator=(const KeyboardAtOnce&) = delete;
};

// A key stroke as the person means it. GUI thread only.
#pragma once

#include <Xm/Xm.h>

struct KeyStroke {
    // Which key, one of the keypad as its like, Shift and Tab as Tab.
    KeySym symbol = NoSymbol;
    // Its modifiers without locks and groups: of ShiftMask, ControlMask and Mod1Mask, which is Alt.
    unsigned int modifiers = 0;
    // What it types, in lower case; 0 for a key that types nothing.
    wchar_t character = 0;
};

// Reads an event of the type KeyPress.
[[nodiscard]] KeyStroke keyStrokeOf(XEvent* event);

// Calls `pressed` for the keys that a widget gets, before Motif acts on them, and leaves to Motif those for which it
// returns false. The same function twice for one widget counts once.
using KeyHandler = bool (*)(Widget widget, XEvent* event);
void onKeyStroke(Widget widget, KeyHandler pressed);

// The keys that work wherever the keyboard is in a window: Tab leads through the widgets as the eye reads, Ctrl and
// Page Up or Page Down turn the pages of a strip of tabs, as the arrow keys do on the strip itself, which is one stop
// for Tab, and Alt and its letter act on a button or a field. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// Makes them work in a window, given by its shell: in what is in a main window now, and in what a dialog holds whenever
// it comes up. What takes a mnemonic and has none then gets a letter of its label that is free.
void serveKeys(Widget shell);

// Makes them work in what was made or managed since the window came up.
void serveNewcomers(Widget shell);

// Moves the keyboard to the first widget below `part`, as the eye reads, that takes it.
void focusFirst(Widget part);

// Callbacks that watch what is typed into a text field (XmNmodifyVerifyCallback of XmText and XmTextField).
#pragma once

#include <Xm/Xm.h>

// Keeps the real text of a password field out of the widget, which shows one "*" for each character. `clientData` is
// the address of a char* that holds the real text: null while nothing was typed, else text from XtMalloc that belongs
// to the caller. It follows insertions, deletions and replacements anywhere in the field.
void checkPassword(Widget widget, XtPointer clientData, XtPointer callData);

// Refuses a lone newline. Pasted text with newlines among other characters passes.
void discardNewLine(Widget widget, XtPointer clientData, XtPointer callData);

// The dialog in which a person chooses a file. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <string>

#include "motifutil/widgets.h"

// Makes a file selection dialog over `parent`, full application modal and unmanaged, without Help and with the labels
// that all such dialogs share. `further` are arguments of its own. The window manager's close does what its cancel
// callbacks, which the caller adds, do. Throws std::bad_alloc when it can't be made.
Widget createFileDialog(Widget parent, const char* name, const std::string& title, const ArgumentList& further);

// What createFileDialog() does to its own: hides the cursors of idle fields, makes the keys of a table work in both
// lists and the letters of labels and buttons, and puts the tabs of a file's name back into the selection field, which
// Motif takes out on the way from the list, so that the name would be another file's. Callbacks of the lists that read
// the field are to be added afterwards.
void finishFileSelection(Widget box);

// How the parts of the page's file selection box stand. Motif's own arrangement goes by the names that the lists hold:
// the box would look another way in every directory. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// Keeps the parts of a box of full paths in their places, whatever its size and the names: the filter under
// `filterLabel`, a child of the box, and its button beside it, then the lists of directories and files, 2 to 3,
// scrolled to where the names begin behind the directory that all have in common, then the selection.
void arrangeFileSelection(Widget box, Widget filterLabel);

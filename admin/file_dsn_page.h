// The File DSN page: the file data sources of one directory. GUI thread only.
#pragma once

#include <Xm/Xm.h>

extern Widget frmFileDSN;
extern Widget TxtFDDesc;
extern Widget FSelect;
// The directory text of the file selection box; null, since a box that shows full paths has none.
extern Widget TxtDirectory;
extern Widget BtnFDAdd;
extern Widget BtnFDRemove;
extern Widget BtnFDConfigure;
extern Widget BtnSetDirectory;

// Builds the page, unmanaged; its tab belongs to the main window.
Widget createFileDsnPage(Widget notebook);

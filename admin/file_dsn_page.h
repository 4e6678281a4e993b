// The File DSN page: the file data sources of one directory. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <string>

extern Widget frmFileDSN;
extern Widget separator3;
extern Widget TxtFDDesc;
extern Widget FSelect;
// The directory text of the file selection box; null, since a box that shows full paths has none.
extern Widget TxtDirectory;
extern Widget BtnFDAdd;
extern Widget BtnFDRemove;
extern Widget BtnFDConfigure;
extern Widget BtnSetDirectory;

// Builds the page, unmanaged; its tab belongs to the main window. `add` is what the Add button does: the dialog that it
// opens is built on this page.
Widget createFileDsnPage(Widget notebook, XtCallbackProc add);

// Shows the file data sources of `directory`, which ends in "/", as they are on disk now.
void showFileDsnDirectory(const std::string& directory);
// Looks at the shown directory again; the file that was selected stays selected if it is still there.
void refreshFileDsnPage();

// Lets the driver of the selected file data source configure it.
void btnFDConfigure_Clicked(Widget widget, XtPointer clientData, XtPointer callData);
// Asks, and RemoveFileDSN deletes the file `path` and shows its directory.
void btnFDRemove_Clicked(Widget widget, XtPointer clientData, XtPointer callData);
void RemoveFileDSN(Widget widget, XtPointer path, XtPointer callData);
// Asks, and change_default_Directory makes the shown directory the default for file data sources.
void btnSetDirectory_Activate(Widget widget, XtPointer clientData, XtPointer callData);
void change_default_Directory(Widget widget, XtPointer clientData, XtPointer callData);

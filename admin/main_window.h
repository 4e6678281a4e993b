// The main window: a notebook of five pages above the row of global buttons. GUI thread only.
#pragma once

#include <Xm/Xm.h>

extern Widget FrmMain;
extern Widget Separator;
extern Widget TabManager;
extern Widget BtnOK;
extern Widget BtnCancel;
extern Widget BtnHelp;
extern Widget TbUserDSN;
extern Widget TbFileDSN;
extern Widget TbDrivers;
extern Widget TbAbout;

// Builds the window, unrealised, and fills its pages. `appName`, `argc` and `argv` are those of the program; the X
// Toolkit takes its options out of the arguments.
void create_shODBCAdmin(Display* connection, char* appName, int argc, char** argv);

// The row of buttons: OK saves the trace settings and ends the program, Cancel ends it, Apply saves and becomes
// insensitive.
void btnOK_activate(Widget widget, XtPointer clientData, XtPointer callData);
void btnCancel_activate(Widget widget, XtPointer clientData, XtPointer callData);
void btnApply_activate(Widget widget, XtPointer clientData, XtPointer callData);

// Remembers the page in front; `tabCode` is its tab's code.
void tabSelectionChanged(Widget widget, XtPointer tabCode, XtPointer callData);

// Shows the help topic of the page in front; nothing for a tab code without a page.
void btnHelp_Clicked(Widget widget, XtPointer clientData, XtPointer callData);

// The User DSN page: the data sources of this account, with Add, Remove and Configure. GUI thread only.
#pragma once

#include <Xm/Xm.h>

extern Widget FormUserDSN;
extern Widget LbDesc;
extern Widget BtnAdd;
extern Widget BtnRemove;
extern Widget BtnConfigure;
extern Widget TxtODBCDesc;
extern Widget ScrWinLabels;
extern Widget FormLabels;
extern Widget LblName;
extern Widget LblDriver;
extern Widget ScrWinLists;
extern Widget FormLists;
extern Widget LstUName;
extern Widget LstUDesc;

// Builds the page, unmanaged, with empty lists; its tab belongs to the main window. `add` is what the Add button does:
// the dialog that it opens is built on this page.
Widget createUserDsnPage(Widget notebook, XtCallbackProc add);

// A list of the page, in `FormLists`: as wide as its items when `flag` is non-zero, of constant width otherwise. Null,
// after the out-of-memory report, when it can't be made.
Widget createUserDSNXmList(int flag, const char* name);

// Fills both lists from ".odbc.ini" and selects the row at the position that was selected before, else the first.
void populateUserDSN(Widget nameList, Widget driverList);

// Re-attaches lists and headers by the lists' widths.
void setSizePosForUserDSNWidgets();

void btnRemove_Clicked(Widget widget, XtPointer clientData, XtPointer callData);
// Removes the data source named by `dsnName` (a char*, which the question that led here owns).
void RemoveUserDsn(Widget widget, XtPointer dsnName, XtPointer callData);
void btnConfigure_Clicked(Widget widget, XtPointer clientData, XtPointer callData);
void UDSN_doubleClick(Widget widget, XtPointer clientData, XtPointer callData);
void lstUName_Selected(Widget widget, XtPointer clientData, XtPointer callData);
void lstUDesc_Selected(Widget widget, XtPointer clientData, XtPointer callData);
// Keeps the headers above the columns while the lists scroll sideways.
void synchonizeScrollUD(Widget scrollBar, XtPointer clientData, XtPointer callData);

// The driver chooser: what the dialog for a new data source shows first, the installed drivers. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// The dialog for a new data source; the File DSN wizard builds it.
extern Widget DlgDriverPopup;
extern Widget BtnAdvanced;
extern Widget FormScr1;
extern Widget LstDPName;
extern Widget LstDPVersion;
extern Widget LstDPCompany;
extern Widget LstDPFile;
extern Widget LstDPDate;

// Builds FormScr1 in `parent` and fills its lists; `doubleClicked` is the default action of each.
void createDriverScreen(Widget parent, XtCallbackProc doubleClicked);
// Shows or hides the button behind which attributes are typed, and gives the lists the room.
void offerAdvancedAttributes(bool offered);

// The width with which the screen shows names, versions and companies.
int widthForDrivers();

// Hides the dialog.
void CloseDriverPopup(Widget widget, XtPointer clientData, XtPointer callData);
// Keeps the selected row of the five lists in step and remembers the chosen driver in `CurrentDriver`.
void DriversPopupEntrySelected(Widget list, XtPointer clientData, XtPointer callData);
// Keeps the headers above the columns while the lists scroll sideways.
void synchonizeScrollDP(Widget scrollBar, XtPointer clientData, XtPointer callData);

// The File DSN wizard: the dialog for a new data source. For a file data source it leads through three screens: the
// driver, the file name, a summary; for a user data source it shows the first alone. GUI thread only.
#pragma once

#include <Xm/Xm.h>

extern Widget BtnFinish;
extern Widget BtnNavigate;
extern Widget BtnDPCancel;
// The third screen and its summary.
extern Widget FormScr3;
extern Widget TxtDSNInfo;

// The screen that is shown, 1 to 3.
extern short CurScreenAt;

// Builds the dialog, unmanaged.
void create_FileDsnWizard();

// Opens the dialog to add a data source of this kind (1 file, 2 user).
void addDsn(short kind);
// What the Add buttons of the two pages do.
void AddUserDsn_Clicked(Widget widget, XtPointer clientData, XtPointer callData);
void AddFDsn_Clicked(Widget widget, XtPointer clientData, XtPointer callData);

// Leads on: to the next screen, or to the end.
void Wizard_Next(Widget widget, XtPointer clientData, XtPointer callData);
// Leads back to the screen before.
void Wizard_Back(Widget widget, XtPointer clientData, XtPointer callData);
// A double click on a driver leads on, too.
void DPDriver_doubleClick(Widget list, XtPointer clientData, XtPointer callData);
// Lets the person choose the file name in the file dialog.
void BrowseFileDSN(Widget widget, XtPointer clientData, XtPointer callData);

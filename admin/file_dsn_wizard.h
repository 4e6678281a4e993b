// The File DSN wizard: the dialog for a new data source. For a file data source it leads through three screens: the
// driver, the file name, a summary; for a user data source it shows the first alone. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include "admin/flow.h"

extern Widget BtnFinish;
extern Widget BtnNavigate;
extern Widget BtnDPCancel;
// The second screen and its file name field.
extern Widget FormScr2;
extern Widget Text7;
// The third screen and its summary.
extern Widget FormScr3;
extern Widget TxtDSNInfo;

// The screen that is shown, 1 to 3.
extern short CurScreenAt;

// Builds the dialog, unmanaged.
void create_FileDsnWizard();

// Leads back to the screen before.
void Wizard_Back(Widget widget, XtPointer clientData, XtPointer callData);

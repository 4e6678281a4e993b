// The driver chooser: the dialog that opens when a data source is to be added, and its first screen with the installed
// drivers. GUI thread only.
#pragma once

#include <Xm/Xm.h>

extern Widget DlgDriverPopup;
extern Widget BtnFinish;
extern Widget BtnNavigate;
extern Widget BtnDPCancel;
extern Widget BtnAdvanced;
extern Widget FormScr1;
extern Widget LstDPName;
extern Widget LstDPVersion;
extern Widget LstDPCompany;
extern Widget LstDPFile;
extern Widget LstDPDate;

// Builds the dialog, unmanaged.
void create_FileDsnWizard();

void Wizard_Next(Widget widget, XtPointer clientData, XtPointer callData);
// Hides the dialog.
void CloseDriverPopup(Widget widget, XtPointer clientData, XtPointer callData);
// Keeps the selected row of the five lists in step and remembers the chosen driver in `CurrentDriver`.
void DriversPopupEntrySelected(Widget list, XtPointer clientData, XtPointer callData);
void DPDriver_doubleClick(Widget list, XtPointer clientData, XtPointer callData);
// Keeps the headers above the columns while the lists scroll sideways.
void synchonizeScrollDP(Widget scrollBar, XtPointer clientData, XtPointer callData);

// The dialog in which a person types connection attributes for a file data source. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// Null until the dialog was shown for the first time.
extern Widget AdvFDDialog;
extern Widget TxtFDAdv;

// Makes the dialog anew and shows it: each opening starts from the one line that names the driver.
void Show_AdvancedOptionDialog(Widget widget, XtPointer clientData, XtPointer callData);

// Both hide the dialog. After OK its attributes count, after Cancel they don't, nor do those of an earlier OK, unless a
// summary has been shown of them: those stay until the wizard is opened anew.
void advFDDialogOK_Clicked(Widget widget, XtPointer clientData, XtPointer callData);
void advFDDialogCancel_Clicked(Widget widget, XtPointer clientData, XtPointer callData);
// Keeps IsVerificationNeeded as the toggle is.
void VerifyConnection_StateChanged(Widget toggle, XtPointer clientData, XtPointer callData);

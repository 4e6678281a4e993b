// The file dialog `Fdialog`, in which a person chooses the file name of a file data source. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// What a name chosen in it is for: the wizard's field, or the file that is being made.
inline constexpr int kBrowseForName = 0;
inline constexpr int kChooseFileName = 1;

// Shows the dialog; OK calls `chosen` with `mode` as its client data. The dialog is made once: its parent and what its
// names are for stay those of the first use.
void showFileNameDialog(int mode, XtCallbackProc chosen);
// Cancel: hides the dialog.
void fdialog_canceled(Widget widget, XtPointer clientData, XtPointer callData);

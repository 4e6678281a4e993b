// The file dialog `Fdialog`, in which a person chooses the file name of a file data source. showFileDialogBox() in
// admin/flow.h shows it. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// OK: completes the chosen name with ".dsn". With the mode kChooseFileName it becomes that of the file being made,
// which is finished with it; otherwise it goes into the wizard's field. A directory is no choice: the dialog stays.
void dsnFileSelected(Widget dialogBox, XtPointer mode, XtPointer callData);
// Cancel: hides the dialog.
void fdialog_canceled(Widget widget, XtPointer clientData, XtPointer callData);

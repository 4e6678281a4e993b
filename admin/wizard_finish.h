// The end of adding a data source: the driver's setup library or the administrator makes it, when the person agrees to
// what is in its way. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// Completes the adding of a data source with the driver chosen: calls the driver's setup library and refreshes the
// page. `attributes` is null or, for a file data source, an attribute list (const char*). A callback too: the OK of the
// box that tells the result of a connection test.
void finish(Widget widget, XtPointer attributes, XtPointer callData = nullptr);

// Makes the file data source FileDSNName with the typed attributes DsnInfo. When the connection is not to be verified
// the file is written, and that is all. Otherwise the file is written for a connection test and deleted again, and the
// driver makes it, with the attributes, when the person has seen the result: whatever stood under that name before is
// then gone, because a test must leave nothing behind. Without a driver nothing is written or deleted, and a report
// says so.
void finishWithAttributes();

// Whether the file `name`, which is FileDSNName, may be written now; FileDSNName is a full path afterwards. When not, a
// dialog was shown: an error, or the question whether to overwrite what is there, whose answers go on from there.
[[nodiscard]] bool checkPerm(const char* name);
// Writes the driver and the items of the connection string to the file FileDSNName; nothing unless checkPerm() allows
// it. An error dialog tells when the file is not complete.
void writeDsnToFile(const char* connectionString);

// OK of the overwrite question: lets the driver make the file `path` anew. The old one comes back when the driver makes
// none. Attributes that were typed in the advanced dialog are not used then: they belong to a file that the
// administrator would have written itself.
void overwriteFileDSN(Widget widget, XtPointer path, XtPointer callData);
// Cancel of the overwrite question: lets the person choose another name.
void openSaveAsControl(Widget widget, XtPointer clientData, XtPointer callData);

// Lets the person choose a file name in the file dialog, for what `mode` (admin/file_name_dialog.h) says.
void showFileDialogBox(int mode);
// OK of the file dialog: completes the chosen name with ".dsn". With the mode kChooseFileName it becomes that of the
// file being made, which is finished with it; otherwise it goes into the wizard's field. A directory is no choice: the
// dialog stays.
void dsnFileSelected(Widget dialogBox, XtPointer mode, XtPointer callData);

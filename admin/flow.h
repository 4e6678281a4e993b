// The operations that pages call across one another.
#pragma once

#include <Xm/Xm.h>

// Opens the driver chooser to add a data source of this kind (1 file, 2 user); for a file it is the first screen of the
// File DSN wizard.
void addDsn(short kind);

// The wizard's button that leads on: to the next screen, or to finish().
void Wizard_Next(Widget widget, XtPointer clientData, XtPointer callData);

// Completes the adding of a data source with the driver chosen: calls the driver's setup library and refreshes the
// page. `attributes` is null or, for a file data source, an attribute list (const char*). A callback too: the OK of the
// box that tells the result of a connection test.
void finish(Widget widget, XtPointer attributes, XtPointer callData = nullptr);

// What a name chosen in the file dialog is for: the wizard's field, or the file that is being made.
inline constexpr int kBrowseForName = 0;
inline constexpr int kChooseFileName = 1;

// Shows the file dialog `Fdialog`. It is made once: its parent and what its names are for stay those of the first use.
void showFileDialogBox(int mode);
// The callback that shows it for the wizard's field.
void BrowseFileDSN(Widget widget, XtPointer clientData, XtPointer callData);

// Writes the trace settings, whether tracing is on or off; a write that fails is reported.
void Save_Trace();

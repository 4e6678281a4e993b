// The Tracing page: whether the driver manager writes down every ODBC call, and where. GUI thread only.
#pragma once

#include <Xm/Xm.h>

extern Widget FrmTrace;
extern Widget BtnTrace;
extern Widget TgEnableTracing;
extern Widget LblTraceFile;
extern Widget TxtTraceFile;
extern Widget BtnTFileBrowse;
extern Widget LblTraceLib;
extern Widget TxtTraceLib;
extern Widget BtnTLibBrowse;
extern Widget LblTraceState;
extern Widget TxtTraceDesc;

// Builds the page and its tab button, both unmanaged, and shows what is stored. Null, after the out-of-memory report,
// when it can't be made.
Widget createTraceTab(Widget notebook);

// Writes the trace settings, whether tracing is on or off; a write that fails is reported.
void Save_Trace();

// Shows the trace settings of ".odbc.ini"; what can't be read is off, or empty.
void Load_Trace();

// The toggle was switched: the controls below it follow, and Apply becomes sensitive.
void TraceConfigStateChanged(Widget toggle, XtPointer clientData, XtPointer callData);
// Either text was changed: Apply becomes sensitive.
void Trace_activityNoticed(Widget text, XtPointer clientData, XtPointer callData);

// What is browsed for, as client data of the browse buttons and of their dialog.
inline constexpr XtArgVal kBrowseTraceFile = 1;
inline constexpr XtArgVal kBrowseTraceLibrary = 2;
// Opens a file dialog for one of the two fields.
void SelectTraceFile(Widget button, XtPointer kind, XtPointer callData);
// Takes the file chosen over into its field, or leaves the field alone; the dialog is destroyed.
void FileSelected(Widget box, XtPointer kind, XtPointer callData);
void FileSelectionCancelled(Widget box, XtPointer clientData, XtPointer callData);

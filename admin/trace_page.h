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
extern Widget TxtTraceDesc;

// Builds the page and its tab button, both unmanaged.
Widget createTraceTab(Widget notebook);

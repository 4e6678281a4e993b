// The Drivers page: the drivers that are installed. GUI thread only.
#pragma once

#include <Xm/Xm.h>

extern Widget FrmDrivers;
extern Widget LbDDesc;
extern Widget TxtDriversDesc;
extern Widget scrolledWin1;
extern Widget frmLabel;
extern Widget scrolledWin2;
extern Widget FrmTable;
extern Widget FormDrivers;
extern Widget LbColName;
extern Widget LbColVersion;
extern Widget LbColCompany;
extern Widget LbColFile;
extern Widget LbColDate;
extern Widget LstName;
extern Widget LstVersion;
extern Widget LstCompany;
extern Widget LstFile;
extern Widget LstDate;

// Begins to ask the drivers for their versions, for the time in which the window is built.
void beginDriversPage();

// Builds the page, unmanaged, with empty lists; its tab belongs to the main window.
Widget createDriversPage(Widget notebook);

// Fills five parallel lists with the installed drivers, sorted by name. With no driver, or a driver file that can't be
// read, the error is shown and the lists are 100 by 25 pixels.
void populateDriverInfo(Widget nameList, Widget fileList, Widget versionList, Widget companyList, Widget dateList);

// Places lists and headers of the page side by side by the lists' widths.
void setSizePosForDriversWidgets(Widget nameList, Widget versionList, Widget companyList, Widget fileList,
                                 Widget dateList, Widget nameHeader, Widget versionHeader, Widget companyHeader,
                                 Widget fileHeader, Widget dateHeader);

// Keeps the selected row of the five lists in step.
void DriversTabEntrySelected(Widget list, XtPointer clientData, XtPointer callData);
// Keeps the headers above the columns while the lists scroll sideways.
void synchonizeScrollDT(Widget scrollBar, XtPointer clientData, XtPointer callData);

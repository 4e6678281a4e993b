// The About page: the components of the ODBC installation. GUI thread only.
#pragma once

#include <Xm/Xm.h>

extern Widget FrmAbout;
extern Widget LblAboutText;
extern Widget ScrAboutLabels;
extern Widget FormAboutLabels;
extern Widget ScrAboutLists;
extern Widget FormAboutLists;
extern Widget TxtAboutDesc;
extern Widget LblAbtDesc;
extern Widget LblAbtVersion;
extern Widget LblSAbtFile;
extern Widget LstAbtDesc;
extern Widget LstAbtVersion;
extern Widget LstAbtFile;

// Begins to ask the components for their versions, so that the answers are there when the page is built.
void beginAboutTab();

// Builds the page, unmanaged; its tab belongs to the main window.
Widget createAboutForm(Widget notebook);

// Fills the four rows: this program, and what each of the three libraries says of itself. A library that is not found
// has an empty version.
void populateAboutTab();

// Places lists and headers side by side by the lists' widths. It takes ten widgets as the Drivers page's does, but the
// three columns of this page rule: the lists and headers of the other two are null.
void setSizePosAboutTabWidgets(Widget list1, Widget list2, Widget list3, Widget list4, Widget list5, Widget header1,
                               Widget header2, Widget header3, Widget header4, Widget header5);

// Keeps the selected row of the three lists in step.
void AboutTabItemSelected(Widget list, XtPointer clientData, XtPointer callData);

#include "admin/about_page.h"

#include <Xm/ScrollBar.h>

#include "admin/columns.h"
#include "admin/lists.h"
#include "motifutil/widgets.h"

Widget FrmAbout = nullptr;
Widget LblAbtDesc = nullptr;
Widget LblAbtVersion = nullptr;
Widget LblSAbtFile = nullptr;
Widget LstAbtDesc = nullptr;
Widget LstAbtVersion = nullptr;
Widget LstAbtFile = nullptr;

namespace {

Widget AboutLists = nullptr;

std::vector<Column> columns() {
    return {{LstAbtDesc, LblAbtDesc}, {LstAbtVersion, LblAbtVersion}, {LstAbtFile, LblSAbtFile}};
}

void fitToView() {
    fitColumns(columns(), AboutLists);
}

// Keeps the headers above the columns while the lists scroll sideways.
void scrolled(Widget /*scrollBar*/, XtPointer /*clientData*/, XtPointer callData) {
    scrollHeaders(columns(), static_cast<XmScrollBarCallbackStruct*>(callData)->value);
}

}  // namespace

Widget createAboutForm(Widget notebook) {
    FrmAbout = createPage(notebook, "FrmAbout");
    Widget heading = createLabel(FrmAbout, "LblAboutText", Message::kAboutHeading);

    Widget headers = createHeaderWindow(FrmAbout, "ScrAboutLabels");
    Widget headerForm = createForm(headers, "FormAboutLabels");
    LblAbtDesc = createLabel(headerForm, "LblAbtDesc", Message::kColumnDescription);
    LblAbtVersion = createLabel(headerForm, "LblAbtVersion", Message::kColumnVersion);
    LblSAbtFile = createLabel(headerForm, "LblSAbtFile", Message::kColumnFile);

    AboutLists = createScrolledWindow(FrmAbout, "ScrAboutLists");
    Widget table = createForm(AboutLists, "FormAboutLists");
    LstAbtDesc = createList(table, "LstAbtDesc", AboutTabItemSelected, nullptr);
    LstAbtVersion = createList(table, "LstAbtVersion", AboutTabItemSelected, nullptr);
    LstAbtFile = createList(table, "LstAbtFile", AboutTabItemSelected, nullptr);

    Widget explanation = createReadOnlyText(FrmAbout, "TxtAboutDesc", Message::kAboutExplanation, 2);
    placeTable({FrmAbout, heading, headers, AboutLists, explanation, {}});
    watchColumns(columns(), AboutLists, scrolled, fitToView);
    setSizePosAboutTabWidgets();
    return FrmAbout;
}

void setSizePosAboutTabWidgets() {
    placeColumns(columns());
}

void AboutTabItemSelected(Widget list, XtPointer /*clientData*/, XtPointer /*callData*/) {
    selectSameRow(list, {LstAbtDesc, LstAbtVersion, LstAbtFile});
}

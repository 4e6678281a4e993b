#include "admin/about_page.h"

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

void fitToView() {
    fitColumns({{LstAbtDesc, LblAbtDesc}, {LstAbtVersion, LblAbtVersion}, {LstAbtFile, LblSAbtFile}},
               viewWidth(AboutLists));
}

}  // namespace

Widget createAboutForm(Widget notebook, int pageNumber) {
    FrmAbout = createPage(notebook, "FrmAbout", pageNumber);
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
    onResize(AboutLists, fitToView);
    return FrmAbout;
}

void AboutTabItemSelected(Widget list, XtPointer /*clientData*/, XtPointer /*callData*/) {
    selectSameRow(list, {LstAbtDesc, LstAbtVersion, LstAbtFile});
}

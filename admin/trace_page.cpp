#include "admin/trace_page.h"

#include <Xm/Frame.h>

#include "motifutil/widgets.h"

Widget FrmTrace = nullptr;
Widget BtnTrace = nullptr;
Widget TgEnableTracing = nullptr;
Widget LblTraceFile = nullptr;
Widget TxtTraceFile = nullptr;
Widget BtnTFileBrowse = nullptr;
Widget LblTraceLib = nullptr;
Widget TxtTraceLib = nullptr;
Widget BtnTLibBrowse = nullptr;
Widget TxtTraceDesc = nullptr;

namespace {

constexpr int kMargin = 12;
constexpr int kGap = 8;

// A label above a text field with a browse button on its right, below `above` (null: at the top of the form).
void placePathRow(Widget label, Widget field, Widget button, Widget above) {
    Attach(label).leftForm(kMargin);
    if (above == nullptr) {
        Attach(label).topForm(kMargin);
    } else {
        Attach(label).below(above, kMargin);
    }
    Attach(button).below(label, kGap / 2).rightForm(kMargin);
    Attach(field).below(label, kGap / 2).leftForm(kMargin).leftOf(button, kGap);
}

}  // namespace

Widget createTraceTab(Widget notebook) {
    FrmTrace = createPage(notebook, "FrmTrace");
    BtnTrace = createTab(notebook, "BtnTrace", Message::kTracingTab);

    TgEnableTracing = createToggleButton(FrmTrace, "TgEnableTracing", Message::kEnableTracing);
    Attach(TgEnableTracing).topForm(kMargin).leftForm(kMargin);

    Widget frame = XtVaCreateManagedWidget("FramConfigTracing", xmFrameWidgetClass, FrmTrace, nullptr);
    Attach(frame).below(TgEnableTracing, kGap).leftForm(kMargin).rightForm(kMargin);
    Widget form = createForm(frame, "FrmConfigTrace");
    LblTraceFile = createLabel(form, "LblTraceFile", Message::kTraceFile);
    TxtTraceFile = createTextField(form, "TxtTraceFile");
    BtnTFileBrowse = createPushButton(form, "BtnTFileBrowse", Message::kBrowse);
    placePathRow(LblTraceFile, TxtTraceFile, BtnTFileBrowse, nullptr);
    LblTraceLib = createLabel(form, "LblTraceLib", Message::kTraceLibrary);
    TxtTraceLib = createTextField(form, "TxtTraceLib");
    BtnTLibBrowse = createPushButton(form, "BtnTLibBrowse", Message::kBrowse);
    placePathRow(LblTraceLib, TxtTraceLib, BtnTLibBrowse, TxtTraceFile);
    XtVaSetValues(TxtTraceLib, XmNbottomAttachment, XmATTACH_FORM, XmNbottomOffset, kMargin, nullptr);

    // Tracing is off, and can't be switched on here so far.
    for (Widget control :
         {TgEnableTracing, LblTraceFile, TxtTraceFile, BtnTFileBrowse, LblTraceLib, TxtTraceLib, BtnTLibBrowse}) {
        XtSetSensitive(control, False);
    }

    TxtTraceDesc = createReadOnlyText(FrmTrace, "TxtTraceDesc", Message::kTracingExplanation, 3);
    Attach(TxtTraceDesc).leftForm(kMargin).rightForm(kMargin).bottomForm(kMargin);
    return FrmTrace;
}

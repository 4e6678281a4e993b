#include "admin/driver_chooser.h"

#include <Xm/DialogS.h>
#include <Xm/Frame.h>
#include <Xm/MessageB.h>
#include <Xm/ScrollBar.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "admin/columns.h"
#include "admin/dialogs.h"
#include "admin/driver_setup.h"
#include "admin/drivers_page.h"
#include "admin/flow.h"
#include "admin/forms.h"
#include "admin/globals.h"
#include "admin/lists.h"
#include "admin/user_dsn_page.h"
#include "installer/configuration.h"
#include "motifutil/widgets.h"

Widget DlgDriverPopup = nullptr;
Widget BtnFinish = nullptr;
Widget BtnNavigate = nullptr;
Widget BtnDPCancel = nullptr;
Widget BtnAdvanced = nullptr;
Widget FormScr1 = nullptr;
Widget LstDPName = nullptr;
Widget LstDPVersion = nullptr;
Widget LstDPCompany = nullptr;
Widget LstDPFile = nullptr;
Widget LstDPDate = nullptr;

namespace {

constexpr int kMargin = 12;
constexpr int kGap = 8;

Widget DriverLists = nullptr;
Widget AdvancedHint = nullptr;
std::vector<Column> Columns;

void fitToView() {
    fitColumns(Columns, DriverLists);
}

Widget createColumn(Widget table, Widget headers, const char* listName, const char* headerName, Message::Number title) {
    Widget list = createList(table, listName, DriversPopupEntrySelected, DPDriver_doubleClick);
    Columns.push_back({list, createLabel(headers, headerName, title)});
    return list;
}

void createDriverScreen(Widget parent) {
    FormScr1 = createForm(parent, "FormScr1");
    Widget heading = createLabel(FormScr1, "LblDPHeading", Message::kChooserHeading);
    Attach(heading).topForm(kMargin).leftForm(kMargin);
    BtnAdvanced = createPushButton(FormScr1, "BtnAdvanced", Message::kAdvanced);
    Attach(BtnAdvanced).rightForm(kMargin).bottomForm(kMargin);
    AdvancedHint = createLabel(FormScr1, "LblDPHint", Message::kChooserAdvancedHint);
    Attach(AdvancedHint).leftForm(kMargin).bottomForm(kMargin);

    Columns.clear();  // those of a chooser that was destroyed with its window
    Widget headers = createHeaderWindow(FormScr1, "scrWinDPLabel");
    Widget headerForm = createForm(headers, "frmLabel");
    DriverLists = createScrolledWindow(FormScr1, "scrWinDPLists");
    Widget table = createForm(DriverLists, "frmLists");
    LstDPName = createColumn(table, headerForm, "LstDPName", "LblDPName", Message::kColumnName);
    LstDPVersion = createColumn(table, headerForm, "LstDPVersion", "LblDPVersion", Message::kColumnVersion);
    LstDPCompany = createColumn(table, headerForm, "LstDPCompany", "LblDPCompany", Message::kColumnCompany);
    LstDPFile = createColumn(table, headerForm, "LstDPFile", "LblDPFile", Message::kColumnFile);
    LstDPDate = createColumn(table, headerForm, "LstDPDate", "LblDPDate", Message::kColumnDate);
    Attach(headers).below(heading, kGap).leftForm(kMargin).rightForm(kMargin);
    Attach(DriverLists).below(headers, 0).leftForm(kMargin).rightForm(kMargin);
    watchColumns(Columns, DriverLists, synchonizeScrollDP, fitToView);

    populateDriverInfo(LstDPName, LstDPFile, LstDPVersion, LstDPCompany, LstDPDate);
    placeColumns(Columns);
}

// Adds a user data source with the driver selected in the chooser.
void finishUserDataSource() {
    const std::optional<int> row = selectedRow(LstDPName);
    if (!row) {
        showInformation(Message::kChooserSelectOne);
        return;
    }
    const std::string driver = rowText(LstDPName, *row);
    XtUnmanageChild(DlgDriverPopup);
    installer::forgetCachedValues();
    const std::string setup = installer::readValue(driver, "Setup", installer::kDriverFile);
    if (setup.empty()) {
        showError(Message::kDriverHasNoSetup);
        return;
    }
    callDynamic(setup.c_str(), kAddDataSource, driver.c_str(), nullptr, kUserDataSource, nullptr);
    populateUserDSN(LstUName, LstUDesc);
}

}  // namespace

void create_FileDsnWizard() {
    try {
        const std::string title = catalogText(Message::kChooserTitle);
        ArgumentList arguments;
        arguments.set(XmNtitle, title.c_str())
            .set(XmNautoUnmanage, False)
            .set(XmNdialogStyle, XmDIALOG_FULL_APPLICATION_MODAL)
            .set(XmNnoResize, True);
        static char name[] = "DlgDriverPopup";
        DlgDriverPopup = XmCreateTemplateDialog(ShODBCAdmin, name, arguments.data(), arguments.size());
        if (DlgDriverPopup == nullptr) {
            throw std::bad_alloc();
        }
        onWindowManagerClose(XtParent(DlgDriverPopup), CloseDriverPopup, nullptr);

        // The template's own separator would stand between the wizard's buttons and nothing.
        XtUnmanageChild(XtNameToWidget(DlgDriverPopup, "Separator"));

        Widget form = createForm(DlgDriverPopup, "FileDsnMainWiz");
        BtnDPCancel = createPushButton(form, "BtnDPCancel", Message::kCancel, CloseDriverPopup);
        BtnFinish = createPushButton(form, "BtnFinish", Message::kFinish, Wizard_Next);
        BtnNavigate = createPushButton(form, "BtnNavigate", Message::kBack);
        equalizeWidths({BtnNavigate, BtnFinish, BtnDPCancel});
        Attach(BtnDPCancel).rightForm(kMargin).bottomForm(kMargin);
        Attach(BtnFinish).leftOf(BtnDPCancel, kGap).bottomForm(kMargin);
        Attach(BtnNavigate).leftOf(BtnFinish, kGap).bottomForm(kMargin);
        Widget separator = createSeparator(form, "Separator5");
        Attach(separator).leftForm().rightForm().above(BtnDPCancel, kMargin);

        Widget frame = XtVaCreateManagedWidget("FramWizMain", xmFrameWidgetClass, form, nullptr);
        Attach(frame).topForm().leftForm().rightForm().above(separator, 0);
        createDriverScreen(createForm(frame, "FormWizMain"));
        XtVaSetValues(form, XmNdefaultButton, BtnFinish, XmNcancelButton, BtnDPCancel, nullptr);
    } catch (const std::bad_alloc&) {
        showOutOfMemoryErrorAdmin();
    }
}

void addDsn(short kind) {
    show_Form(FormScr1);
    DsnType = kind;
    const bool isFile = kind == kFileDataSource;
    for (Widget widget : {BtnAdvanced, BtnNavigate, AdvancedHint}) {
        if (isFile) {
            XtManageChild(widget);
        } else {
            XtUnmanageChild(widget);
        }
    }
    if (isFile) {
        Attach(DriverLists).above(BtnAdvanced, kGap);
    } else {
        Attach(DriverLists).bottomForm(kMargin);
    }
    setLabel(BtnFinish, catalogText(isFile ? Message::kNext : Message::kFinish));
    XtSetSensitive(BtnNavigate, False);
    XtManageChild(DlgDriverPopup);
    XmProcessTraversal(LstDPName, XmTRAVERSE_CURRENT);
}

void finish(Widget /*widget*/, const char* /*attributes*/) {
    guarded(finishUserDataSource);
}

void Wizard_Next(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    finish(nullptr, nullptr);
}

void CloseDriverPopup(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    XtUnmanageChild(DlgDriverPopup);
}

void DriversPopupEntrySelected(Widget list, XtPointer /*clientData*/, XtPointer /*callData*/) {
    guarded([list] {
        std::vector<Widget> lists;
        for (const Column& column : Columns) {
            lists.push_back(column.list);
        }
        selectSameRow(list, lists);
        if (const std::optional<int> row = selectedRow(list)) {
            revealRow(list, *row, DriverLists);
            std::free(CurrentDriver);
            CurrentDriver = strdup(rowText(LstDPName, *row).c_str());
        }
    });
}

void DPDriver_doubleClick(Widget /*list*/, XtPointer /*clientData*/, XtPointer callData) {
    if (isDoubleClick(callData)) {
        finish(nullptr, nullptr);
    }
}

void synchonizeScrollDP(Widget /*scrollBar*/, XtPointer /*clientData*/, XtPointer callData) {
    scrollHeaders(Columns, static_cast<XmScrollBarCallbackStruct*>(callData)->value);
}

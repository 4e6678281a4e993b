#include "admin/driver_chooser.h"

#include <utility>

#include "admin/advanced_dialog.h"
#include "admin/dialogs.h"
#include "admin/drivers_page.h"
#include "admin/globals.h"
#include "admin/lists.h"
#include "admin/table.h"
#include "motifutil/mnemonics.h"
#include "motifutil/spacing.h"
#include "motifutil/widgets.h"

Widget DlgDriverPopup = nullptr;
Widget BtnAdvanced = nullptr;
Widget FormScr1 = nullptr;
Widget LstDPName = nullptr;
Widget LstDPVersion = nullptr;
Widget LstDPCompany = nullptr;
Widget LstDPFile = nullptr;
Widget LstDPDate = nullptr;

namespace {

Table Drivers;
Widget DriverLists = nullptr;
Widget AdvancedHint = nullptr;

// When the advanced dialog is done Return is to lead on, not to open it again.
void focusOnDrivers(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    XmProcessTraversal(LstDPName, XmTRAVERSE_CURRENT);
}

}  // namespace

void createDriverScreen(Widget parent, XtCallbackProc doubleClicked) {
    FormScr1 = createForm(parent, "FormScr1");
    Widget heading = createHeading(FormScr1, "LblDPHeading", Message::kChooserHeading);
    Attach(heading).topForm(kPageMargin).leftForm(kPageMargin);
    BtnAdvanced = createPushButton(FormScr1, "BtnAdvanced", Message::kAdvanced, focusOnDrivers);
    XtAddCallback(BtnAdvanced, XmNactivateCallback, Show_AdvancedOptionDialog, nullptr);
    Attach(BtnAdvanced).rightForm(kPageMargin).bottomForm(kPageMargin);
    AdvancedHint = createLabel(FormScr1, "LblDPHint", Message::kChooserAdvancedHint);
    Attach(AdvancedHint).leftForm(kPageMargin).bottomForm(kPageMargin);

    Widget headers = createHeaderWindow(FormScr1, "scrWinDPLabel");
    Widget headerForm = createForm(headers, "frmLabel");
    DriverLists = createScrolledWindow(FormScr1, "scrWinDPLists");
    Widget table = createForm(DriverLists, "frmLists");
    std::vector<Table::Column> columns;
    const auto createColumn = [&](const char* list, const char* header, Message::Number title) {
        columns.push_back({createList(table, list, DriversPopupEntrySelected, doubleClicked),
                           createLabel(headerForm, header, title)});
        return columns.back().list;
    };
    LstDPName = createColumn("LstDPName", "LblDPName", Message::kColumnName);
    LstDPVersion = createColumn("LstDPVersion", "LblDPVersion", Message::kColumnVersion);
    LstDPCompany = createColumn("LstDPCompany", "LblDPCompany", Message::kColumnCompany);
    LstDPFile = createColumn("LstDPFile", "LblDPFile", Message::kColumnFile);
    LstDPDate = createColumn("LstDPDate", "LblDPDate", Message::kColumnDate);
    Attach(headers).below(heading, kPageGap).leftForm(kPageMargin).rightForm(kPageMargin);
    Attach(DriverLists).below(headers, 0).leftForm(kPageMargin).rightForm(kPageMargin);
    leadTo(heading, LstDPName, mnemonicFor(Message::kChooserHeading));
    Drivers.adopt(std::move(columns), DriverLists, synchonizeScrollDP);

    populateDriverInfo(LstDPName, LstDPFile, LstDPVersion, LstDPCompany, LstDPDate);
    Drivers.place();
}

void offerAdvancedAttributes(bool offered) {
    for (Widget widget : {BtnAdvanced, AdvancedHint}) {
        if (offered) {
            XtManageChild(widget);
        } else {
            XtUnmanageChild(widget);
        }
    }
    if (offered) {
        Attach(DriverLists).above(AdvancedHint, kPageGap);
    } else {
        Attach(DriverLists).bottomForm(kPageMargin);
    }
}

int widthForDrivers() {
    return Drivers.wantedWidth(3) + 2 * kPageMargin;
}

void CloseDriverPopup(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    XtUnmanageChild(DlgDriverPopup);
}

void DriversPopupEntrySelected(Widget list, XtPointer /*clientData*/, XtPointer /*callData*/) {
    guarded([list] {
        Drivers.followRow(list);
        if (const std::optional<int> row = selectedRow(list)) {
            replaceText(CurrentDriver, rowText(LstDPName, *row).c_str());
        }
    });
}

void synchonizeScrollDP(Widget /*scrollBar*/, XtPointer /*clientData*/, XtPointer callData) {
    Drivers.scrollHeaders(callData);
}

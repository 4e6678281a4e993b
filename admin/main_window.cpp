#include "admin/main_window.h"

#include <Xm/Notebook.h>

#include <array>
#include <new>
#include <string>

#include "admin/about_page.h"
#include "admin/dialogs.h"
#include "admin/drivers_page.h"
#include "admin/file_dsn_page.h"
#include "admin/globals.h"
#include "admin/trace_page.h"
#include "admin/user_dsn_page.h"
#include "help/help_locator.h"
#include "motifutil/widgets.h"

Widget FrmMain = nullptr;
Widget TabManager = nullptr;
Widget BtnOK = nullptr;
Widget BtnCancel = nullptr;
Widget BtnHelp = nullptr;
Widget TbUserDSN = nullptr;
Widget TbFileDSN = nullptr;
Widget TbDrivers = nullptr;
Widget TbAbout = nullptr;

namespace {

constexpr int kMargin = 16;
constexpr int kGap = 12;

// A page of the notebook: its tab's code and its topic in the help book.
struct PageCode {
    unsigned char tabCode;
    const char* helpTopic;
};

// The pages in the order of their tabs; page numbers begin with 1.
constexpr std::array<PageCode, 5> kPages{
    {{'U', "userdsn"}, {'F', "filedsn"}, {'D', "drivers"}, {'T', "trace"}, {'A', "about"}}};

// A page can come to the front without its tab being pressed: the keyboard turns pages too.
void pageChanged(Widget /*notebook*/, XtPointer /*clientData*/, XtPointer callData) {
    const int page = static_cast<XmNotebookCallbackStruct*>(callData)->page_number;
    if (page >= 1 && page <= static_cast<int>(kPages.size())) {
        CurrentSelectedTab = kPages[static_cast<std::size_t>(page - 1)].tabCode;
    }
}

void helpRequested(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    if (XtIsSensitive(BtnHelp)) {
        pressButton(BtnHelp);
    }
}

Widget createNotebook(Widget parent) {
    ArgumentList arguments;
    arguments.set(XmNorientation, XmVERTICAL)
        .set(XmNbindingType, XmNONE)
        .set(XmNbackPagePlacement, XmTOP_RIGHT)
        .set(XmNbackPageNumber, 1)
        .set(XmNbackPageSize, 1);
    static char name[] = "TabManager";
    Widget notebook = XmCreateNotebook(parent, name, arguments.data(), arguments.size());
    if (notebook == nullptr) {
        throw std::bad_alloc();
    }
    // A notebook places its tab scrollers anew only when one of them is managed.
    Widget scroller = XtNameToWidget(notebook, "MajorTabScrollerNext");
    XtChangeManagedSet(&scroller, 1, nullptr, nullptr, &scroller, 1);
    XtAddCallback(notebook, XmNpageChangedCallback, pageChanged, nullptr);
    return notebook;
}

void createButtonRow() {
    BtnOK = createPushButton(FrmMain, "BtnOK", Message::kOk, btnOK_activate);
    BtnCancel = createPushButton(FrmMain, "BtnCancel", Message::kCancel, btnCancel_activate);
    BtnApply = createPushButton(FrmMain, "BtnApply", Message::kApply, btnApply_activate);
    BtnHelp = createPushButton(FrmMain, "BtnHelp", Message::kHelp, btnHelp_Clicked);
    equalizeWidths({BtnOK, BtnCancel, BtnApply, BtnHelp});
    Attach(BtnHelp).rightForm(kMargin).bottomForm(kMargin);
    Attach(BtnApply).leftOf(BtnHelp, kGap).bottomForm(kMargin);
    Attach(BtnCancel).leftOf(BtnApply, kGap).bottomForm(kMargin);
    Attach(BtnOK).leftOf(BtnCancel, kGap).bottomForm(kMargin);
    XtVaSetValues(FrmMain, XmNdefaultButton, BtnOK, XmNcancelButton, BtnCancel, nullptr);
}

void createPages() {
    createUserDsnPage(TabManager);
    TbUserDSN = createTab(TabManager, "TbUserDSN", Message::kUserDsnTab);
    createFileDsnPage(TabManager);
    TbFileDSN = createTab(TabManager, "TbFileDSN", Message::kFileDsnTab);
    createDriversPage(TabManager);
    TbDrivers = createTab(TabManager, "TbDrivers", Message::kDriversTab);
    createTraceTab(TabManager);
    createAboutForm(TabManager);
    TbAbout = createTab(TabManager, "TbAbout", Message::kAboutTab);

    std::array pagesAndTabs{FormUserDSN, TbUserDSN, frmFileDSN, TbFileDSN, FrmDrivers,
                            TbDrivers,   FrmTrace,  BtnTrace,   FrmAbout,  TbAbout};
    for (std::size_t i = 0; i < kPages.size(); ++i) {
        Widget page = pagesAndTabs[2 * i];
        Widget tab = pagesAndTabs[2 * i + 1];
        const int number = static_cast<int>(i) + 1;
        XtVaSetValues(page, XmNpageNumber, number, nullptr);
        XtVaSetValues(tab, XmNpageNumber, number, nullptr);
        const XtArgVal code = kPages[i].tabCode;
        XtAddCallback(tab, XmNactivateCallback, tabSelectionChanged, reinterpret_cast<XtPointer>(code));
    }
    XtManageChildren(pagesAndTabs.data(), static_cast<Cardinal>(pagesAndTabs.size()));
    XtUnmanageChild(XtNameToWidget(TabManager, "PageScroller"));
}

void fillPages() {
    populateUserDSN(LstUName, LstUDesc);
    populateDriverInfo(LstName, LstFile, LstVersion, LstCompany, LstDate);
}

}  // namespace

void create_shODBCAdmin(Display* connection, char* appName, int argc, char** argv) {
    try {
        const std::string title = catalogText(Message::kWindowTitle);
        ArgumentList arguments;
        arguments.set(XmNtitle, title.c_str()).set(XmNiconName, title.c_str()).set(XtNargc, argc).set(XtNargv, argv);
        ShODBCAdmin = XtAppCreateShell(appName, "ODBC Administrator", applicationShellWidgetClass, connection,
                                       arguments.data(), arguments.size());
        if (ShODBCAdmin == nullptr) {
            throw std::bad_alloc();
        }
        onWindowManagerClose(ShODBCAdmin, btnCancel_activate, nullptr);

        FrmMain = createForm(ShODBCAdmin, "FrmMain");
        XtUnmanageChild(FrmMain);
        XtAddCallback(FrmMain, XmNhelpCallback, helpRequested, nullptr);
        TabManager = createNotebook(FrmMain);
        createButtonRow();
        Widget separator = createSeparator(FrmMain, "Separator");
        Attach(separator).leftForm().rightForm().above(BtnOK, kGap);
        Attach(TabManager).topForm(kGap).leftForm(kGap).rightForm(kGap).above(separator, kGap);

        createPages();
        fillPages();
        XtManageChild(TabManager);
        XtManageChild(FrmMain);
        XtSetSensitive(BtnApply, False);
    } catch (const std::bad_alloc&) {
        showOutOfMemoryErrorAdmin();
    }
}

void tabSelectionChanged(Widget /*widget*/, XtPointer tabCode, XtPointer /*callData*/) {
    CurrentSelectedTab = static_cast<unsigned char>(reinterpret_cast<XtArgVal>(tabCode));
}

void btnHelp_Clicked(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    for (const PageCode& page : kPages) {
        if (page.tabCode == CurrentSelectedTab) {
            kvDisplayHelp(reinterpret_cast<const unsigned char*>("Administrator"),
                          reinterpret_cast<const unsigned char*>(page.helpTopic));
        }
    }
}

#include "admin/main_window.h"

#include <Xm/Notebook.h>

#include <array>
#include <new>
#include <string>
#include <vector>

#include "admin/about_page.h"
#include "admin/dialogs.h"
#include "admin/drivers_page.h"
#include "admin/file_dsn_page.h"
#include "admin/file_dsn_wizard.h"
#include "admin/first_size.h"
#include "admin/globals.h"
#include "admin/look.h"
#include "admin/trace_page.h"
#include "admin/user_dsn_page.h"
#include "help/help_locator.h"
#include "motifutil/script_fonts.h"
#include "motifutil/shells.h"
#include "motifutil/spacing.h"
#include "motifutil/widgets.h"
#include "motifutil/window_help.h"
#include "motifutil/window_keys.h"

Widget FrmMain = nullptr;
Widget TabManager = nullptr;
Widget BtnOK = nullptr;
Widget BtnCancel = nullptr;
Widget BtnHelp = nullptr;
Widget TbUserDSN = nullptr;
Widget TbFileDSN = nullptr;
Widget TbDrivers = nullptr;
Widget TbAbout = nullptr;
Widget Separator = nullptr;

namespace {

// A page of the notebook and its tab, with the tab's code and the page's topic in the help book.
struct Page {
    unsigned char tabCode;
    const char* helpTopic;
    const Widget* page;
    const Widget* tab;
};

// The pages in the order of their tabs; page numbers begin with 1.
constexpr std::array<Page, 5> kPages{{{'U', "userdsn", &FormUserDSN, &TbUserDSN},
                                      {'F', "filedsn", &frmFileDSN, &TbFileDSN},
                                      {'D', "drivers", &FrmDrivers, &TbDrivers},
                                      {'T', "trace", &FrmTrace, &BtnTrace},
                                      {'A', "about", &FrmAbout, &TbAbout}}};

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

// Leads on from a tab that was pressed into its page.
void tabPressed(Widget /*tab*/, XtPointer page, XtPointer /*callData*/) {
    focusFirst(static_cast<Widget>(page));
}

// Motif's own choice would be OK, or with XmNinitialFocus a button of the page: it does not look into scrolled windows.
void beginInPage(Widget shell, XtPointer /*clientData*/, XEvent* event, Boolean* /*continueToDispatch*/) {
    if (event->type == MapNotify) {
        XtRemoveEventHandler(shell, StructureNotifyMask, False, beginInPage, nullptr);
        focusFirst(FormUserDSN);
        setLeastSize(shell, TabManager, FSelect);
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
    XtSetSensitive(BtnApply, False);
    BtnHelp = createPushButton(FrmMain, "BtnHelp", Message::kHelp, btnHelp_Clicked);
    equalizeWidths({BtnOK, BtnCancel, BtnApply, BtnHelp});
    Attach(BtnHelp).rightForm(kWindowMargin).bottomForm(kWindowMargin);
    Attach(BtnApply).leftOf(BtnHelp, kWindowGap).bottomForm(kWindowMargin);
    Attach(BtnCancel).leftOf(BtnApply, kWindowGap).bottomForm(kWindowMargin);
    Attach(BtnOK).leftOf(BtnCancel, kWindowGap).bottomForm(kWindowMargin);
    XtVaSetValues(FrmMain, XmNdefaultButton, BtnOK, XmNcancelButton, BtnCancel, nullptr);
}

void createPages() {
    createUserDsnPage(TabManager, AddUserDsn_Clicked);
    TbUserDSN = createTab(TabManager, "TbUserDSN", Message::kUserDsnTab);
    createFileDsnPage(TabManager, AddFDsn_Clicked);
    TbFileDSN = createTab(TabManager, "TbFileDSN", Message::kFileDsnTab);
    createDriversPage(TabManager);
    TbDrivers = createTab(TabManager, "TbDrivers", Message::kDriversTab);
    if (createTraceTab(TabManager) == nullptr) {
        throw std::bad_alloc();
    }
    createAboutForm(TabManager);
    TbAbout = createTab(TabManager, "TbAbout", Message::kAboutTab);

    std::vector<Widget> pagesAndTabs;
    int number = 0;
    for (const Page& page : kPages) {
        ++number;
        for (Widget widget : {*page.page, *page.tab}) {
            XtVaSetValues(widget, XmNpageNumber, number, nullptr);
            pagesAndTabs.push_back(widget);
        }
        XtAddCallback(*page.tab, XmNactivateCallback, tabSelectionChanged,
                      reinterpret_cast<XtPointer>(XtArgVal{page.tabCode}));
        XtAddCallback(*page.tab, XmNactivateCallback, tabPressed, *page.page);
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
    guarded([=] {
        showHelpTopic = showAdministratorHelp;
        beginDriversPage();
        beginAboutTab();
        const std::string title = catalogText(Message::kWindowTitle);
        ArgumentList arguments;
        arguments.set(XmNtitle, title.c_str()).set(XmNiconName, title.c_str()).set(XtNargc, argc).set(XtNargv, argv);
        ShODBCAdmin = XtAppCreateShell(appName, "ODBC Administrator", applicationShellWidgetClass, connection,
                                       arguments.data(), arguments.size());
        if (ShODBCAdmin == nullptr) {
            throw std::bad_alloc();
        }
        setFont(ShODBCAdmin);
        completeFontsOf(ShODBCAdmin);
        prepareShell(ShODBCAdmin, btnCancel_activate, nullptr);

        FrmMain = createForm(ShODBCAdmin, "FrmMain");
        XtUnmanageChild(FrmMain);
        XtAddCallback(FrmMain, XmNhelpCallback, helpRequested, nullptr);
        TabManager = createNotebook(FrmMain);
        createButtonRow();
        Separator = createSeparator(FrmMain, "Separator");
        Attach(Separator).leftForm().rightForm().above(BtnOK, kWindowGap);
        Attach(TabManager).topForm(kWindowGap).leftForm(kWindowGap).above(Separator, kWindowGap);
        // On its right the notebook keeps room for the scrollers of tabs that it has not got: it goes into the margin.
        Attach(TabManager).rightForm(kWindowGap - preferredWidth(XtNameToWidget(TabManager, "MinorTabScrollerNext")));

        createPages();
        fillPages();
        XtManageChild(TabManager);
        XtAddEventHandler(ShODBCAdmin, StructureNotifyMask, False, beginInPage, nullptr);
        askForFirstSize(TabManager, FSelect);
        XtManageChild(FrmMain);
        serveKeys(ShODBCAdmin);
    });
}

void btnOK_activate(Widget widget, XtPointer clientData, XtPointer callData) {
    // The program ends at once, so a box that reports a failed write is not seen.
    Save_Trace();
    endProgram(widget, clientData, callData);
}

void btnCancel_activate(Widget widget, XtPointer clientData, XtPointer callData) {
    endProgram(widget, clientData, callData);
}

void btnApply_activate(Widget widget, XtPointer /*clientData*/, XtPointer /*callData*/) {
    Save_Trace();
    XtSetSensitive(widget, False);
}

void tabSelectionChanged(Widget /*widget*/, XtPointer tabCode, XtPointer /*callData*/) {
    CurrentSelectedTab = static_cast<unsigned char>(reinterpret_cast<XtArgVal>(tabCode));
}

void btnHelp_Clicked(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    for (const Page& page : kPages) {
        if (page.tabCode == CurrentSelectedTab) {
            showAdministratorHelp(page.helpTopic);
        }
    }
}

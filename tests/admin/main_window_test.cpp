#include "tests/support/window_test.h"

#include <X11/keysym.h>
#include <Xm/Notebook.h>
#include <Xm/TextF.h>

#include <array>

#include "admin/about_page.h"
#include "admin/drivers_page.h"
#include "admin/file_dsn_page.h"
#include "admin/globals.h"
#include "admin/main_window.h"
#include "admin/trace_page.h"
#include "admin/user_dsn_page.h"
#include "motifutil/catalog_text.h"
#include "tests/support/recording_browser.h"

namespace {

class MainWindowTest : public WindowTest {
protected:
    static std::string pageInFront();
};

struct Page {
    Widget* form;
    Widget* tab;
    unsigned char code;
};
constexpr std::array<Page, 5> kPages{{{&FormUserDSN, &TbUserDSN, 'U'},
                                      {&frmFileDSN, &TbFileDSN, 'F'},
                                      {&FrmDrivers, &TbDrivers, 'D'},
                                      {&FrmTrace, &BtnTrace, 'T'},
                                      {&FrmAbout, &TbAbout, 'A'}}};

// Scripts and people's resource files find widgets by these paths and read these labels.
TEST_F(MainWindowTest, WidgetsHaveTheirNamesParentsAndTexts) {
    struct Row {
        const char* path;
        int label;  // 0: it shows no label
    };
    constexpr Row kRows[] = {
        {"FrmMain.Separator", 0},
        {"FrmMain.BtnOK", 9060},
        {"FrmMain.BtnCancel", 9061},
        {"FrmMain.BtnApply", 9058},
        {"FrmMain.BtnHelp", 9059},
        {"FrmMain.TabManager.TbUserDSN", 9023},
        {"FrmMain.TabManager.TbFileDSN", 9039},
        {"FrmMain.TabManager.TbDrivers", 9003},
        {"FrmMain.TabManager.BtnTrace", 9004},
        {"FrmMain.TabManager.TbAbout", 9005},
        {"*FormUserDSN.LbDesc", 9000},
        {"*FormUserDSN.BtnAdd", 9006},
        {"*FormUserDSN.BtnRemove", 9022},
        {"*FormUserDSN.BtnConfigure", 9031},
        {"*FormUserDSN.TxtODBCDesc", 0},
        {"*FormUserDSN.ScrWinLabels*FormLabels.LblName", 9063},
        {"*FormUserDSN.ScrWinLabels*FormLabels.LblDriver", 9064},
        {"*FormUserDSN.ScrWinLists*FormLists.lstUName", 0},
        {"*FormUserDSN.ScrWinLists*FormLists.lstUDesc", 0},
        {"*frmFileDSN.TxtFDDesc", 0},
        {"*frmFileDSN.FSelect", 0},
        {"*frmFileDSN.FSelect.Selection", 9008},
        {"*frmFileDSN.FSelect.Items", 9034},
        {"*frmFileDSN.FSelect.Dir", 9094},
        {"*frmFileDSN.BtnFDAdd", 9009},
        {"*frmFileDSN.BtnFDRemove", 9010},
        {"*frmFileDSN.BtnFDConfigure", 9040},
        {"*frmFileDSN.BtnSetDirectory", 9038},
        {"*frmFileDSN.separator3", 0},
        {"*FrmDrivers.LbDDesc", 9011},
        {"*FrmDrivers.FormDrivers.TxtDriversDesc", 0},
        {"*FormDrivers.scrolledWin1*frmLabel.LbColName", 9063},
        {"*FormDrivers.scrolledWin1*frmLabel.LbColVersion", 9046},
        {"*FormDrivers.scrolledWin1*frmLabel.LbColCompany", 9065},
        {"*FormDrivers.scrolledWin1*frmLabel.LbColFile", 9066},
        {"*FormDrivers.scrolledWin1*frmLabel.LbColDate", 9067},
        {"*FormDrivers.scrolledWin2*FrmTable.LstName", 0},
        {"*FormDrivers.scrolledWin2*FrmTable.LstFile", 0},
        {"*FormDrivers.scrolledWin2*FrmTable.LstVersion", 0},
        {"*FormDrivers.scrolledWin2*FrmTable.LstCompany", 0},
        {"*FormDrivers.scrolledWin2*FrmTable.LstDate", 0},
        {"*FrmTrace.TgEnableTracing", 9028},
        {"*FrmTrace.FramConfigTracing.FrmConfigTrace.LblTraceFile", 9032},
        {"*FrmConfigTrace.TxtTraceFile", 0},
        {"*FrmConfigTrace.BtnTFileBrowse", 9017},
        {"*FrmConfigTrace.LblTraceLib", 9033},
        {"*FrmConfigTrace.TxtTraceLib", 0},
        {"*FrmConfigTrace.BtnTLibBrowse", 9017},
        {"*FrmTrace.TxtTraceDesc", 0},
        {"*FrmAbout.LblAboutText", 9069},
        {"*FrmAbout.ScrAboutLabels*FormAboutLabels.LblAbtDesc", 9070},
        {"*FormAboutLabels.LblAbtVersion", 9046},
        {"*FormAboutLabels.LblSAbtFile", 9066},
        {"*FrmAbout.ScrAboutLists*FormAboutLists.LstAbtDesc", 0},
        {"*FormAboutLists.LstAbtVersion", 0},
        {"*FormAboutLists.LstAbtFile", 0},
        {"*FrmAbout.TxtAboutDesc", 0},
    };
    open();
    for (const Row& row : kRows) {
        Widget widget = child(ShODBCAdmin, row.path);
        if (widget != nullptr && row.label != 0) {
            EXPECT_EQ(labelOf(widget), catalogText(static_cast<Message::Number>(row.label))) << row.path;
        }
    }
    EXPECT_EQ(person().windows(catalogText(Message::kWindowTitle), false).size(), 1U);
    EXPECT_FALSE(XtIsManaged(child(TabManager, "PageScroller")));
    EXPECT_FALSE(XtIsSensitive(BtnApply));
    Widget defaultButton = nullptr;
    Widget cancelButton = nullptr;
    XtVaGetValues(FrmMain, XmNdefaultButton, &defaultButton, XmNcancelButton, &cancelButton, nullptr);
    EXPECT_EQ(defaultButton, BtnOK);
    EXPECT_EQ(cancelButton, BtnCancel);
}

// The code of the page that is to be seen: the others lie under it.
std::string MainWindowTest::pageInFront() {
    const Place book = placeOf(TabManager);
    int x = 0;
    int y = 0;
    Window front = 0;
    XTranslateCoordinates(display, DefaultRootWindow(display), book.window, book.x + book.width / 2,
                          book.y + book.height / 2, &x, &y, &front);
    for (const Page& page : kPages) {
        if (XtWindow(*page.form) == front) {
            return {static_cast<char>(page.code)};
        }
    }
    return "none";
}

TEST_F(MainWindowTest, TheSelectedTabIsKnownHoweverThePageWasTurned) {
    open();
    EXPECT_EQ(CurrentSelectedTab, 85);
    EXPECT_EQ(pageInFront(), "U");
    int before = -1;
    for (const Page& page : kPages) {
        const int x = placeOf(*page.tab).x;
        EXPECT_GT(x, before) << page.code;
        before = x;
    }
    for (const int index : {4, 2, 0, 1, 3}) {
        const Page& page = kPages.at(static_cast<std::size_t>(index));
        click(*page.tab);
        EXPECT_EQ(CurrentSelectedTab, page.code);
        EXPECT_EQ(pageInFront(), std::string(1, static_cast<char>(page.code)));
    }
    XtVaSetValues(TabManager, XmNcurrentPageNumber, 3, nullptr);
    settle();
    EXPECT_EQ(CurrentSelectedTab, 'D');
    // From tab to tab by the arrow keys.
    click(TbUserDSN);
    for (const char* code : {"F", "D", "T", "A"}) {
        key(XK_Right);
        key(XK_space);
        EXPECT_EQ(std::string(1, static_cast<char>(CurrentSelectedTab)), code);
        EXPECT_EQ(pageInFront(), code);
    }
}

TEST_F(MainWindowTest, HelpAndF1AnywhereOpenTheTopicOfThePageInFront) {
    files.write(OdbcFiles::kUser, "[ODBC Data Sources]\nabc=Recorder\n[abc]\nA=b\n[ODBC]\nTRACE=1\n");
    const RecordingBrowser browser;
    open();
    const struct {
        Widget tab;
        Widget field;  // One that takes the keyboard; null when the page has none.
        const char* topic;
    } kTopics[] = {{TbUserDSN, LstUName, "userdsn"},
                   {TbFileDSN, child(frmFileDSN, "FSelect.Text"), "filedsn"},
                   {TbDrivers, LstName, "drivers"},
                   {BtnTrace, TxtTraceFile, "trace"},
                   {TbAbout, nullptr, "about"}};
    std::string expected;
    long count = 0;
    const auto expectTopic = [&](const char* topic) {
        expected += topic + std::string("\n");
        EXPECT_EQ(browser.topics(++count), expected);
    };
    key(XK_F1);
    expectTopic("userdsn");
    for (const auto& row : kTopics) {
        click(row.tab);
        key(XK_F1);
        expectTopic(row.topic);
        click(BtnHelp);
        expectTopic(row.topic);
        if (row.field != nullptr) {
            click(row.field);
            key(XK_F1);
            expectTopic(row.topic);
        }
    }
    CurrentSelectedTab = 'X';
    click(BtnHelp);
    key(XK_F1);
    EXPECT_EQ(browser.topics(count), expected);
}

}  // namespace

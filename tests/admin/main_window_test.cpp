#include "tests/support/window_test.h"

#include <Xm/Notebook.h>

#include <thread>

#include "motifutil/mnemonics.h"
#include "tests/support/recording_browser.h"

namespace {

class MainWindowTest : public WindowTest {
protected:
    // The page that is to be seen: the others lie under it.
    static Window pageInFront() {
        const Place book = placeOf(TabManager);
        int ignored = 0;
        Window front = 0;
        XTranslateCoordinates(display, DefaultRootWindow(display), book.window, book.x + book.width / 2,
                              book.y + book.height / 2, &ignored, &ignored, &front);
        return front;
    }
};

TEST_F(MainWindowTest, TabsTurnPagesAndHelpAndF1AnywhereOpenTheTopicOfThePageInFront) {
    files.write(OdbcFiles::kUser, "[ODBC Data Sources]\nabc=Recorder\n[abc]\nA=b\n[ODBC]\nTRACE=1\n");
    const RecordingBrowser browser;
    open();
    const struct {
        Widget form, tab;
        unsigned char code;
        Widget field;  // One that takes the keyboard; null when the page has none.
        std::string topic;
    } kPages[] = {{FormUserDSN, TbUserDSN, 'U', LstUName, "userdsn"},
                  {frmFileDSN, TbFileDSN, 'F', child(frmFileDSN, "FSelect.Text"), "filedsn"},
                  {FrmDrivers, TbDrivers, 'D', LstName, "drivers"},
                  {FrmTrace, BtnTrace, 'T', TxtTraceFile, "trace"},
                  {FrmAbout, TbAbout, 'A', nullptr, "about"}};
    std::string expected;
    long count = 0;
    const auto expectTopic = [&](const std::string& topic) {
        expected += topic + "\n";
        EXPECT_EQ(browser.topics(++count), expected);
    };
    const auto expectInFront = [&](std::size_t page) {
        EXPECT_EQ(CurrentSelectedTab, kPages[page].code);
        EXPECT_EQ(pageInFront(), XtWindow(kPages[page].form)) << page;
    };
    expectInFront(0);
    EXPECT_EQ(person().windows(catalogText(Message::kWindowTitle), false).size(), 1U);
    EXPECT_FALSE(XtIsManaged(child(TabManager, "PageScroller")));
    key(XK_F1);
    expectTopic("userdsn");
    for (const auto& page : kPages) {
        click(page.tab);
        expectInFront(static_cast<std::size_t>(&page - kPages));
        click(BtnHelp);
        expectTopic(page.topic);
        if (page.field != nullptr) {
            click(page.field);
        }
        key(XK_F1);
        expectTopic(page.topic);
    }
    XtVaSetValues(TabManager, XmNcurrentPageNumber, 3, nullptr);
    settle();
    EXPECT_EQ(CurrentSelectedTab, 'D');
    // Back from the fourth tab by the arrow keys, in order, and by the keys of any place around the end.
    click(BtnTrace);
    key(XK_Tab, XK_Shift_L);
    for (const std::size_t page : {2U, 1U, 0U}) {
        key(XK_Left);
        expectInFront(page);
    }
    key(XK_Prior, XK_Control_L);
    expectInFront(4);
    key(XK_Next, XK_Control_L);
    expectInFront(0);
    CurrentSelectedTab = 'X';
    click(BtnHelp);
    key(XK_F1);
    EXPECT_EQ(browser.topics(count), expected);
}

TEST_F(MainWindowTest, TabLeadsAsTheEyeReadsFromTheFirstWidgetOfEachPage) {
    openWith("[ODBC Data Sources]\nabc=Recorder\n[ODBC]\nTRACE=1\n");
    for (const std::string page :
         {"lstUName BtnAdd BtnRemove BtnConfigure ",
          "FilterText Apply DirList ItemsList Text BtnFDAdd BtnFDRemove BtnFDConfigure BtnSetDirectory ", "LstName ",
          "TgEnableTracing TxtTraceFile BtnTFileBrowse TxtTraceLib BtnTLibBrowse ", "LstAbtDesc "}) {
        std::string order;
        for (int times = 0; times < 2; ++times) {
            do {
                order += XtName(XmGetFocusWidget(FrmMain)) + std::string(" ");
                key(XK_Tab);
            } while (!order.ends_with("BtnHelp "));
            order += XtName(XmGetFocusWidget(FrmMain));
            key(XK_Tab);
        }
        const std::string once = page + "BtnOK BtnCancel BtnHelp ";
        const std::size_t half = order.size() / 2;
        EXPECT_TRUE(order.starts_with(once)) << order;
        EXPECT_EQ(order.substr(0, half), order.substr(half));
        key(XK_Next, XK_Control_L);
    }
}

TEST_F(MainWindowTest, NamesDoNotMakeTheWindowWideAndNothingIsCutOffInTheLeastOne) {
    openWith("[ODBC Data Sources]\n" + std::string(200, 'w') + "=Recorder\n");
    const Place first = placeOf(ShODBCAdmin);
    EXPECT_GE(first.width, 700);
    EXPECT_LE(first.width, std::max(700, WidthOfScreen(XtScreen(ShODBCAdmin)) * 6 / 10));
    EXPECT_LE(placeOf(LbColDate).x + placeOf(LbColDate).width, placeOf(scrolledWin2).x + placeOf(scrolledWin2).width);
    XResizeWindow(display, XtWindow(ShODBCAdmin), 1, 1);
    ASSERT_TRUE(waitFor([&first] { return placeOf(ShODBCAdmin).width < first.width; }));
    for (const auto& [above, below] : {std::pair{ScrWinLists, TxtODBCDesc},
                                       {BtnSetDirectory, TxtFDDesc},
                                       {scrolledWin2, TxtDriversDesc},
                                       {child(FrmTrace, "FramConfigTracing"), TxtTraceDesc},
                                       {ScrAboutLists, TxtAboutDesc}}) {
        settle();
        const Place low = placeOf(below);
        EXPECT_GE(placeOf(above).width, 90) << XtName(above);
        EXPECT_LT(placeOf(above).y + placeOf(above).height, low.y) << XtName(above);
        EXPECT_LT(low.y + low.height, placeOf(BtnOK).y) << XtName(below);
        key(XK_Next, XK_Control_L);
    }
}

TEST_F(MainWindowTest, KeysAndLettersLeadToTheRowsOfTables) {
    std::string list = "[ODBC Data Sources]\n";
    for (char first = 'a'; first <= 'z'; ++first) {
        for (const char* rest : {"", " B", "bc"}) {
            list += first + std::string("bc") + rest + "=Recorder\n";
        }
    }
    files.write("\u00e4rger.dsn", "");
    files.write("Zoo.dsn", "");
    openWith(list + "\u00c4rger=Recorder\n");
    const auto expectRow = [](Widget table, int row, const std::string& step) {
        EXPECT_EQ(selectedRow(table), row) << step;
        const Place window = placeOf(ScrWinLists);
        const Place rows = placeOf(LstUName);
        const int middle = rows.y + rows.height * (2 * row - 1) / (2 * 79);
        EXPECT_TRUE(table != LstUName || (middle > window.y && middle < window.y + window.height)) << step;
    };
    setLabel(BtnAdd, "\u00d6ffnen");
    setMnemonic(BtnAdd, "\u00d6");
    EXPECT_EQ(textOf(BtnAdd), "\u00d6ffnen");
    key(XK_odiaeresis, XK_Alt_L);
    EXPECT_TRUE(waitUntilUp(DlgDriverPopup));
    key(XK_Escape);
    const int page = placeOf(ScrWinLists).height * 79 / placeOf(LstUName).height - 1;
    for (const auto& [symbol, row] : {std::pair{XK_End, 79}, {XK_Home, 1}, {XK_Next, 1 + page}, {XK_Prior, 1}}) {
        key(static_cast<KeySym>(symbol));
        expectRow(LstUName, row, XKeysymToString(static_cast<KeySym>(symbol)));
    }
    for (const auto& [text, row] : {std::pair{"C", 7}, {"cc", 9}, {"CBC b", 8}, {"zbcb", 78}, {"q~", 49}, {"a", 1}}) {
        type(text);
        expectRow(LstUName, row, text);
        std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    }
    key(XK_adiaeresis);
    expectRow(LstUName, 79, "a letter of two bytes");
    key(XK_f, XK_Alt_L);
    key(XK_l, XK_Alt_L);
    for (const auto& [typed, row] : {std::pair{XK_z, 1}, {XK_Adiaeresis, 2}, {XK_Home, 1}, {XK_End, 2}}) {
        key(static_cast<KeySym>(typed));
        expectRow(child(FSelect, "*ItemsList"), row, XKeysymToString(static_cast<KeySym>(typed)));
        std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    }
    key(XK_r, XK_Alt_L);
    answer("OK");
    expectRow(child(FSelect, "*ItemsList"), 1, "after a removal");
}

}  // namespace

#include "tests/support/window_test.h"

#include <Xm/Notebook.h>

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

}  // namespace

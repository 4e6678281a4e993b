#include "tests/support/window_test.h"

#include <Xm/Notebook.h>

#include <sstream>

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

// Scripts and people's resource files find widgets by these paths and read these labels.
TEST_F(MainWindowTest, WidgetsHaveTheirNamesParentsAndTexts) {
    // A path, and the children there, with the numbers of their texts where they show one.
    constexpr std::pair<const char*, const char*> kParents[] = {
        {"FrmMain", "Separator BtnOK=9060 BtnCancel=9061 BtnApply=9058 BtnHelp=9059"},
        {"FrmMain.TabManager", "TbUserDSN=9023 TbFileDSN=9039 TbDrivers=9003 BtnTrace=9004 TbAbout=9005"},
        {"*FormUserDSN", "LbDesc=9000 BtnAdd=9006 BtnRemove=9022 BtnConfigure=9031 TxtODBCDesc"},
        {"*FormUserDSN.ScrWinLabels*FormLabels", "LblName=9063 LblDriver=9064"},
        {"*FormUserDSN.ScrWinLists*FormLists", "lstUName lstUDesc"},
        {"*frmFileDSN", "TxtFDDesc BtnFDAdd=9009 BtnFDRemove=9010 BtnFDConfigure=9040 BtnSetDirectory=9038 separator3"},
        {"*frmFileDSN.FSelect", "Selection=9008 Items=9034 Dir=9094"},
        {"*FrmDrivers", "LbDDesc=9011"},
        {"*FrmDrivers.FormDrivers", "TxtDriversDesc"},
        {"*FormDrivers.scrolledWin1*frmLabel",
         "LbColName=9063 LbColVersion=9046 LbColCompany=9065 LbColFile=9066 LbColDate=9067"},
        {"*FormDrivers.scrolledWin2*FrmTable", "LstName LstFile LstVersion LstCompany LstDate"},
        {"*FrmTrace", "TgEnableTracing=9028 TxtTraceDesc"},
        {"*FrmTrace.FramConfigTracing.FrmConfigTrace",
         "LblTraceFile=9032 TxtTraceFile BtnTFileBrowse=9017 LblTraceLib=9033 TxtTraceLib BtnTLibBrowse=9017"},
        {"*FrmAbout", "LblAboutText=9069 TxtAboutDesc"},
        {"*FrmAbout.ScrAboutLabels*FormAboutLabels", "LblAbtDesc=9070 LblAbtVersion=9046 LblSAbtFile=9066"},
        {"*FrmAbout.ScrAboutLists*FormAboutLists", "LstAbtDesc LstAbtVersion LstAbtFile"},
    };
    open();
    for (const auto& [path, names] : kParents) {
        std::istringstream children(names);
        for (std::string name; children >> name;) {
            const std::size_t equals = name.find('=');
            Widget widget = child(ShODBCAdmin, std::string(path) + "." + name.substr(0, equals));
            if (widget != nullptr && equals != std::string::npos) {
                const auto number = static_cast<Message::Number>(std::stoi(name.substr(equals + 1)));
                EXPECT_EQ(textOf(widget), catalogText(number)) << name;
            }
        }
    }
    EXPECT_EQ(person().windows(catalogText(Message::kWindowTitle), false).size(), 1U);
    EXPECT_FALSE(XtIsManaged(child(TabManager, "PageScroller")));
    EXPECT_FALSE(XtIsSensitive(BtnApply));
}

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
    // Back from the fourth tab by the arrow keys, in order.
    click(BtnTrace);
    for (const std::size_t page : {2U, 1U, 0U}) {
        key(XK_Left);
        key(XK_space);
        expectInFront(page);
    }
    CurrentSelectedTab = 'X';
    click(BtnHelp);
    key(XK_F1);
    EXPECT_EQ(browser.topics(count), expected);
}

}  // namespace

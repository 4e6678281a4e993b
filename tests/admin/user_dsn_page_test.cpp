#include "tests/support/window_test.h"

#include <X11/keysym.h>
#include <Xm/List.h>
#include <Xm/ScrollBar.h>
#include <strings.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "admin/driver_chooser.h"
#include "admin/file_dsn_wizard.h"
#include "admin/globals.h"
#include "admin/lists.h"
#include "admin/user_dsn_page.h"
#include "motifutil/catalog_text.h"

using namespace std::string_literals;
using Rows = std::vector<std::string>;

namespace {

constexpr const char* kThree =
    "[ODBC Data Sources]\nabc=Recorder\nZone=Recorder\nABD=Other\n\n[abc]\nDriver=Recorder\nDatabase=/x "
    "y=z;1\nEmpty=\n\n"
    "[ODBC]\nTrace=0\nInstallDir=/opt/a b\n\n[Zone]\nDriver=Recorder\n\n[ABD]\nDriver=Other\nHost = here\n";

class UserDsnPageTest : public WindowTest {
protected:
    void openWith(const std::string& dataSources) {
        files.write(OdbcFiles::kUser, dataSources);
        open();
    }
    // What the recording setup library was called with since the last time.
    std::string calls() {
        const std::string text = files.read("record");
        files.write("record", "");
        return text;
    }
    static std::string call(int request, const std::string& driver, const std::string& attributes) {
        std::ostringstream text;
        text << request << ' ' << static_cast<void*>(ShODBCAdmin) << ' ' << driver << '\n' << attributes << '\n';
        return text.str();
    }
    // Selected rows of both lists, which must be the same.
    static int selected() {
        EXPECT_EQ(selectedRow(LstUName), selectedRow(LstUDesc));
        return selectedRow(LstUName).value_or(0);
    }

    ScopedEnvironment record_{{"VH_TEST_RECORD", files.path("record")}, {"VH_TEST_RESULT", {}}};
};

TEST_F(UserDsnPageTest, FiveHundredDataSourcesAreListedInOrderWithTheirDrivers) {
    std::map<std::string, std::string> drivers;
    std::string list = "[ODBC Data Sources]\n";
    for (int i = 0; i < 500; ++i) {
        const int number = i * 7 % 500;
        const std::string name = (i % 3 == 0 ? "data source " : "Data Source ") + std::to_string(number);
        drivers[name] = "Driver " + std::to_string(i % 9);
        list += name + "=" + drivers[name] + "\n";
    }
    openWith(list);
    const Rows names = rows(LstUName);
    const Rows shown = rows(LstUDesc);
    ASSERT_EQ(names.size(), drivers.size());
    ASSERT_EQ(shown.size(), drivers.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(shown[i], drivers[names[i]]) << names[i];
        EXPECT_TRUE(i == 0 || strcasecmp(names[i - 1].c_str(), names[i].c_str()) < 0) << names[i];
    }
}

TEST_F(UserDsnPageTest, NamesAreSortedAsTheyAlwaysWere) {
    struct Case {
        const char* about;
        Rows listed, shown;
    };
    const Case kCases[] = {
        {"case does not count", {"b", "ABD", "abc"}, {"abc", "ABD", "b"}},
        {"exchanging turns equal names around", {"same", "SAME", "b"}, {"b", "SAME", "same"}},
        {"and keeps them when nothing is exchanged", {"same", "SAME", "t"}, {"same", "SAME", "t"}},
        {"two bytes are no name", {"a"}, {}},
        {"three are", {"ab"}, {"ab"}},
        {"longer than a row was once", {std::string(300, 'n'), "m"}, {"m", std::string(300, 'n')}},
    };
    files.write(OdbcFiles::kSystem, "[ODBC Data Sources]\nOf the system=Recorder\n");
    open();
    EXPECT_EQ(rows(LstUName), Rows());
    for (const Case& test : kCases) {
        std::string list = "[ODBC Data Sources]\n";
        for (const std::string& name : test.listed) {
            list += name + "=Recorder\n";
        }
        files.write(OdbcFiles::kUser, list);
        populateUserDSN(LstUName, LstUDesc);
        EXPECT_EQ(rows(LstUName), test.shown) << test.about;
        EXPECT_EQ(rows(LstUDesc), Rows(test.shown.size(), "Recorder")) << test.about;
    }
}

TEST_F(UserDsnPageTest, BothListsSelectTheSameRowAndKeepItsPosition) {
    openWith(kThree);
    EXPECT_EQ(rows(LstUName), (Rows{"abc", "ABD", "Zone"}));
    EXPECT_EQ(rows(LstUDesc), (Rows{"Recorder", "Other", "Recorder"}));
    EXPECT_EQ(selected(), 1);
    clickRow(LstUDesc, 3);
    EXPECT_EQ(selected(), 3);
    clickRow(LstUName, 2);
    EXPECT_EQ(selected(), 2);
    key(XK_Down);
    EXPECT_EQ(selected(), 3);
    files.write(OdbcFiles::kUser, "[ODBC Data Sources]\n0=R\n"s + &kThree[20]);
    populateUserDSN(LstUName, LstUDesc);
    EXPECT_EQ(rows(LstUName), (Rows{"0", "abc", "ABD", "Zone"}));
    EXPECT_EQ(selected(), 3);
}

TEST_F(UserDsnPageTest, HeadersStayAboveTheirColumns) {
    openWith("[ODBC Data Sources]\n" + std::string(120, 'w') + "=Recorder\nab=" + std::string(120, 'd') + "\n");
    const auto expectAligned = [](const char* when) {
        EXPECT_NEAR(placeOf(LblName).x, placeOf(LstUName).x, 2) << when;
        EXPECT_NEAR(placeOf(LblDriver).x, placeOf(LstUDesc).x, 2) << when;
        EXPECT_EQ(placeOf(LblName).height, 25) << when;
    };
    expectAligned("at first");
    const int before = placeOf(LstUName).x;
    Widget scrollBar = nullptr;
    XtVaGetValues(ScrWinLists, XmNhorizontalScrollBar, &scrollBar, nullptr);
    int value = 0;
    int slider = 0;
    int increment = 0;
    int page = 0;
    XmScrollBarGetValues(scrollBar, &value, &slider, &increment, &page);
    XmScrollBarSetValues(scrollBar, 40, slider, increment, page, True);
    settle();
    EXPECT_EQ(placeOf(LstUName).x, before - 40);
    expectAligned("scrolled by 40");
    populateUserDSN(LstUName, LstUDesc);
    settle();
    EXPECT_EQ(placeOf(LstUName).x, before - 40);
    expectAligned("filled again");
    click(scrollBar);
    key(XK_Right, XK_Control_L);  // a page
    EXPECT_NE(placeOf(LstUName).x, before - 40);
    expectAligned("scrolled by a page");
}

TEST_F(UserDsnPageTest, AnEmptyListTakesNeitherConfigureNorRemove) {
    openWith("[ODBC Data Sources]\n");
    EXPECT_EQ(rows(LstUName), Rows());
    EXPECT_EQ(rows(LstUDesc), Rows());
    EXPECT_EQ(dialog, nullptr);
    click(BtnConfigure);
    expectReport(Message::kConfigureSelectOne);
    click(BtnRemove);
    expectReport(Message::kRemoveSelectOne);
}

TEST_F(UserDsnPageTest, RemoveAsksAndThenTakesTheDataSourceOutOfBothPlaces) {
    openWith(kThree);
    const OdbcFiles::Sections before = files.userSections();
    clickRow(LstUName, 1);
    click(BtnRemove);
    EXPECT_EQ(dialogText(), "Remove the data source \"abc\" and all its settings?");
    answer("Cancel");
    EXPECT_EQ(files.read(OdbcFiles::kUser), kThree);

    click(BtnRemove);
    answer("OK");
    OdbcFiles::Sections expected = before;
    std::erase_if(expected, [](const auto& section) { return section.first == "abc"; });
    std::erase(expected.front().second, "abc=Recorder");
    EXPECT_EQ(files.userSections(), expected);
    EXPECT_EQ(rows(LstUName), (Rows{"ABD", "Zone"}));
    EXPECT_EQ(rows(LstUDesc), (Rows{"Other", "Recorder"}));

    for (int left = 2; left > 0; --left) {
        clickRow(LstUName, 1);
        click(BtnRemove);
        answer("OK");
    }
    EXPECT_EQ(rows(LstUName), Rows());
    EXPECT_EQ(rows(LstUDesc), Rows());
    EXPECT_EQ(files.userSections(),
              (OdbcFiles::Sections{{"ODBC Data Sources", {}}, {"ODBC", {"Trace=0", "InstallDir=/opt/a b"}}}));
    EXPECT_EQ(placeOf(LblName).width, placeOf(LstUName).width);
    EXPECT_EQ(placeOf(LblDriver).width, placeOf(LstUDesc).width);
    click(BtnRemove);
    expectReport(Message::kRemoveSelectOne);
}

TEST_F(UserDsnPageTest, ConfigureHandsEveryKeyToTheDriver) {
    files.write(OdbcFiles::kSystem, "[ODBC Data Sources]\nOf the system=Recorder\n[Of the system]\nDriver=Recorder\n");
    files.write(OdbcFiles::kDrivers,
                "[Recorder]\nDriver=/r.so\nSetup=" VH_TEST_SETUP "\n[Second]\nDriver=/s.so\nSetup=" VH_TEST_SETUP "\n");
    openWith(kThree);
    const std::string first = call(2, "Recorder", "DSN=abc\0Driver=Recorder\0Database=/x y=z;1\0Empty=\0\0"s);
    clickRow(LstUName, 1);
    click(BtnConfigure);
    EXPECT_EQ(calls(), first);
    clickRow(LstUDesc, 3, 2);
    EXPECT_EQ(calls(), call(2, "Recorder", "DSN=Zone\0Driver=Recorder\0\0"s));
    // Another program changed what was read a moment ago.
    files.write(OdbcFiles::kUser, "[ODBC Data Sources]\nabc=Second\n[abc]\nDriver=Second\nDatabase=new\n");
    clickRow(LstUName, 1, 2);
    EXPECT_EQ(calls(), call(2, "Second", "DSN=abc\0Driver=Second\0Database=new\0\0"s));
    EXPECT_EQ(rows(LstUName), Rows{"abc"});
    EXPECT_EQ(dialog, nullptr);
    // The driver left the library looking at the system's data sources too, which show when the user has none.
    click(BtnRemove);
    answer("OK");
    files.write(OdbcFiles::kUser, "[ODBC]\nTrace=0\n");
    populateUserDSN(LstUName, LstUDesc);
    EXPECT_EQ(rows(LstUName), Rows());
}

TEST_F(UserDsnPageTest, EachFailureOfADriversSetupHasItsReport) {
    struct Case {
        const char* driver;
        const char* setup;
        Message::Number add, configure;
    };
    constexpr Case kCases[] = {
        {"a missing", "Setup=/no/such/library.so", Message::kSetupLibraryNotLoaded, Message::kSetupLibraryNotLoaded},
        {"b no function", "Setup=" VH_TEST_NO_SETUP, Message::kNoConfigDsn, Message::kNoConfigDsn},
        {"c refuses", "Setup=" VH_TEST_SETUP, Message::kSetupFailed, Message::kSetupFailed},
        {"d no setup", "", Message::kDriverHasNoSetup, Message::kDriverFileUnreadable},
    };
    const ScopedEnvironment refuse{{"VH_TEST_RESULT", "0"}};
    std::string drivers;
    std::string list = "[ODBC Data Sources]\n";
    std::string sections;
    for (const Case& test : kCases) {
        const std::string driver = test.driver;
        drivers += "[" + driver + "]\nDriver=/d.so\n" + test.setup + "\n";
        list += driver + "=" + driver + "\n";
        sections += "[" + driver + "]\nDriver=" + driver + "\n";
    }
    files.write(OdbcFiles::kDrivers, drivers);
    const std::string before = list + "e no keys=c refuses\n" + sections + "[e no keys]\n";
    openWith(before);
    int row = 0;
    for (const Case& test : kCases) {
        SCOPED_TRACE(test.driver);
        clickRow(LstUName, ++row);
        click(BtnConfigure);
        expectReport(test.configure);
        click(BtnAdd);
        clickRow(LstDPName, row);
        click(BtnFinish);
        expectReport(test.add);
        EXPECT_FALSE(isVisible(XtParent(DlgDriverPopup)));
    }
    EXPECT_EQ(files.read(OdbcFiles::kUser), before);
    EXPECT_EQ(calls(), call(2, "c refuses", "DSN=c refuses\0Driver=c refuses\0\0"s) + call(1, "c refuses", "null"));
    clickRow(LstUName, 5, 2);
    EXPECT_EQ(dialogText(), catalogText(Message::kDataSourceFileUnreadable));
}

TEST_F(UserDsnPageTest, AddCallsTheDriverThatIsChosen) {
    files.write(OdbcFiles::kDrivers, "[Plain]\nDriver=/p.so\n[Recorder]\nDriver=/r.so\nSetup=" VH_TEST_SETUP "\n");
    openWith("[ODBC Data Sources]\nabc=Recorder\n");
    const auto chooserIsUp = [] { return person().hasFocus(XtWindow(XtParent(DlgDriverPopup))); };
    click(BtnAdd);
    ASSERT_TRUE(waitFor(chooserIsUp));
    EXPECT_EQ(DsnType, kUserDataSource);
    EXPECT_EQ(rows(LstDPName), (Rows{"Plain", "Recorder"}));
    EXPECT_EQ(labelOf(BtnFinish), catalogText(Message::kFinish));
    XmListDeselectAllItems(LstDPName);
    click(BtnFinish);
    expectReport(Message::kChooserSelectOne);
    EXPECT_TRUE(waitFor(chooserIsUp));
    // Meanwhile another program adds the data source that the driver would have added.
    files.write(OdbcFiles::kUser, "[ODBC Data Sources]\nabc=Recorder\nadded=Recorder\n");
    clickRow(LstDPName, 2);
    EXPECT_STREQ(CurrentDriver, "Recorder");
    click(BtnFinish);
    EXPECT_EQ(calls(), call(1, "Recorder", "null"));
    EXPECT_EQ(rows(LstUName), (Rows{"abc", "added"}));
    EXPECT_FALSE(isVisible(XtParent(DlgDriverPopup)));

    click(BtnAdd);
    clickRow(LstDPName, 2, 2);
    EXPECT_EQ(calls(), call(1, "Recorder", "null"));

    const std::function<void()> ways[] = {[] { click(BtnDPCancel); }, [] { key(XK_F4, XK_Alt_L); },
                                          [] { key(XK_Escape); }};
    for (const auto& leave : ways) {
        click(BtnAdd);
        ASSERT_TRUE(waitFor(chooserIsUp));
        leave();
        EXPECT_TRUE(waitFor([] { return !isVisible(XtParent(DlgDriverPopup)); }));
    }
    EXPECT_EQ(calls(), "");
    clickRow(LstUName, 2);
    EXPECT_EQ(selected(), 2);
}

}  // namespace

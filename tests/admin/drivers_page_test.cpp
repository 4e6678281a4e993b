#include "tests/support/window_test.h"

#include <Xm/ScrollBar.h>
#include <unicode/uversion.h>

#include <clocale>

using Rows = std::vector<std::string>;

namespace {

class ComponentPagesTest : public WindowTest {
protected:
    static void openChooser() { clickFor(BtnAdd, DlgDriverPopup); }
    // Parallel lists and the headers above them.
    struct Table {
        std::vector<Widget> lists, headers;
        Widget scrolledWindow;
    };
    static Table page() {
        return {{LstName, LstVersion, LstCompany, LstFile, LstDate},
                {LbColName, LbColVersion, LbColCompany, LbColFile, LbColDate},
                child(FrmDrivers, "*scrolledWin2")};
    }
    static Table chooser() {
        Table table{
            {LstDPName, LstDPVersion, LstDPCompany, LstDPFile, LstDPDate}, {}, child(DlgDriverPopup, "*scrWinDPLists")};
        for (Widget list : table.lists) {
            table.headers.push_back(child(DlgDriverPopup, "*Lbl" + std::string(XtName(list)).substr(3)));
        }
        return table;
    }
    static void expectSelected(const Table& table, int row) {
        for (Widget list : table.lists) {
            EXPECT_EQ(selectedRow(list), row) << XtName(list);
        }
    }

    const ScopedEnvironment identification_{{"KVLIB", VH_TEST_IDENTIFICATION}};
};

TEST_F(ComponentPagesTest, DriversOfEveryKindStandInOrderWithAllTheirColumns) {
    const std::string longPath = "/opt/" + std::string(200, 'p') + "/libdrv.so";
    files.write(OdbcFiles::kDrivers,
                "[b]\nDriver=/opt/x/lib/libdrv.so\n[ODBC]\nTrace=0\n[A]\nDriver=" VH_TEST_SQLITE_DRIVER
                "\n[c]\nDriver=" VH_TEST_NO_COMPANY "\n[d]\nDriver=bare.so\n[f]\nDriver=" VH_TEST_LONG_COMPANY
                "\n[g]\nDriver=" VH_TEST_NO_SETUP "\n[e]\nDriver=" +
                    longPath + "\n[No library]\nSetup=/s.so\n");
    // Dates are written as the locale has it, here one of the test's own.
    outputOf("localedef -c -i '" + files.write("dates", "LC_TIME\nd_fmt \"%Y~%d~%m\"\nEND LC_TIME\n") + "' '" +
             files.path("locale") + "'");
    const ScopedEnvironment locales{{"LOCPATH", files.path("")}};
    ASSERT_NE(std::setlocale(LC_TIME, "locale"), nullptr);
    open();
    std::setlocale(LC_TIME, "C.UTF-8");
    expectReport(Message::kDriverFileUnreadable);  // of the one without a library
    for (const Table& table : {page(), chooser()}) {
        EXPECT_EQ(rows(table.lists[0]), (Rows{"A", "b", "c", "d", "e", "f", "g", "No library"}));
        Rows versions = rows(table.lists[1]);
        EXPECT_TRUE(versions[0].starts_with("05.30.0002 (SQLite 3.")) << versions[0];
        versions.erase(versions.begin());
        EXPECT_EQ(versions, (Rows{" ", "7.1", " ", " ", "1", " ", " "}));
        EXPECT_EQ(rows(table.lists[2]),
                  (Rows{"Varnholt Technologies", " ", " ", " ", " ", VH_TEST_LONG_COMPANY_NAME, " ", " "}));
        // A path is read into 128 bytes, of which the installer library leaves two.
        EXPECT_EQ(rows(table.lists[3]),
                  (Rows{"vhsqlite23.so", "libdrv.so", "component_without_company.so", "bare.so", std::string(121, 'p'),
                        "component_of_a_long_company.so", "vhtrc23.so", " "}));
        EXPECT_EQ(rows(table.lists[4])[0] + "\n", outputOf("date -r '" VH_TEST_SQLITE_DRIVER "' '+%Y~%d~%m'"));
        EXPECT_EQ(rows(table.lists[4])[1], " ");
    }
    click(TbDrivers);
    int row = 0;
    for (Widget column : page().lists) {
        XmListSelectPos(column, ++row, True);
        expectSelected(page(), row);
    }
}

TEST_F(ComponentPagesTest, TheChooserIsUsedFromEachColumn) {
    files.write(OdbcFiles::kDrivers, "[a]\nDriver=/a.so\n[b]\nDriver=/b.so\n[c]\nDriver=/c.so\n");
    open();
    openChooser();
    const char* const drivers[] = {"a", "b", "c"};
    for (std::size_t i = 0; i < 5; ++i) {
        const int row = static_cast<int>((i + 2) % 3) + 1;
        clickRow(chooser().lists[i], row);
        expectSelected(chooser(), row);
        EXPECT_STREQ(CurrentDriver, drivers[row - 1]);
    }
}

TEST_F(ComponentPagesTest, HeadersStayAboveTheColumnsAndAllOfThoseCanBeReached) {
    const std::string wide(90, 'w');
    files.write(OdbcFiles::kDrivers, "[" + wide + "]\nDriver=" VH_TEST_LONG_COMPANY "\n");
    openWith("[ODBC Data Sources]\n" + wide + "=Recorder\nab=" + wide + wide + "\n");
    const auto expectAligned = [](const Table& table, const char* when) {
        for (std::size_t i = 0; i < table.lists.size(); ++i) {
            EXPECT_EQ(placeOf(table.headers[i]).x, placeOf(table.lists[i]).x) << when << i;
            EXPECT_EQ(placeOf(table.headers[i]).width, placeOf(table.lists[i]).width) << when << i;
            EXPECT_EQ(placeOf(table.headers[i]).height, 25) << when << i;
        }
    };
    const auto scroll = [&](const Table& table) {
        expectAligned(table, "at first");
        Widget scrollBar = nullptr;
        XtVaGetValues(table.scrolledWindow, XmNhorizontalScrollBar, &scrollBar, nullptr);
        int slider = 0, maximum = 0;
        XtVaGetValues(scrollBar, XmNsliderSize, &slider, XmNmaximum, &maximum, nullptr);
        Widget last = table.lists.back();
        const int before = placeOf(last).x;
        for (const int scrolled : {maximum - slider, 40}) {
            XmScrollBarSetValues(scrollBar, scrolled, slider, 1, 10, True);
            settle();
            EXPECT_EQ(placeOf(last).x, before - scrolled);
            expectAligned(table, "scrolled");
            const Place view = placeOf(table.scrolledWindow);
            EXPECT_TRUE(scrolled == 40 || placeOf(last).x + placeOf(last).width <= view.x + view.width);
        }
    };
    const Table user{{LstUName, LstUDesc}, {LblName, LblDriver}, ScrWinLists};
    scroll(user);
    const int before = placeOf(LstUName).x;
    populateUserDSN(LstUName, LstUDesc);
    settle();
    EXPECT_EQ(placeOf(LstUName).x, before);
    expectAligned(user, "filled again");
    openChooser();
    scroll(chooser());
    key(XK_Escape);
    click(TbDrivers);
    scroll(page());
}

TEST_F(ComponentPagesTest, AboutAlwaysHasItsFourRows) {
    open();
    click(TbAbout);
    EXPECT_EQ(rows(LstAbtFile), (Rows{"odbcadmin", "odbccurs", "libodbc", "libvhicu23"}));
    // The texts of rows 3 and 4 have crossed numbers.
    EXPECT_EQ(rows(LstAbtDesc),
              (Rows{catalogText(Message::kAboutAdministrator), catalogText(Message::kAboutCursorLibrary),
                    catalogText(Message::kAboutDriverManager), catalogText(Message::kAboutConversionLibrary)}));
    EXPECT_EQ(rows(LstAbtVersion)[0], "05.30.0002 (B0023, U0021)");
    EXPECT_EQ(rows(LstAbtVersion)[1].find("2."), 0U) << rows(LstAbtVersion)[1];
    EXPECT_EQ(rows(LstAbtVersion)[2].find("03."), 0U) << rows(LstAbtVersion)[2];
    EXPECT_EQ(rows(LstAbtVersion)[3].find(U_ICU_VERSION), 0U) << rows(LstAbtVersion)[3];
    clickRow(LstAbtVersion, 3);
    expectSelected({{LstAbtDesc, LstAbtFile}, {}, nullptr}, 3);
}

}  // namespace

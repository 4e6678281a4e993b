#include "tests/support/window_test.h"

#include <X11/keysym.h>
#include <Xm/List.h>
#include <Xm/ScrollBar.h>
#include <unicode/uversion.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <optional>

#include "admin/about_page.h"
#include "admin/driver_chooser.h"
#include "admin/drivers_page.h"
#include "admin/globals.h"
#include "admin/lists.h"
#include "admin/main_window.h"
#include "admin/user_dsn_page.h"
#include "motifutil/catalog_text.h"

using Rows = std::vector<std::string>;

namespace {

class ComponentPagesTest : public WindowTest {
protected:
    static void openChooser() {
        click(BtnAdd);
        ASSERT_TRUE(waitFor([] { return person().hasFocus(XtWindow(XtParent(DlgDriverPopup))); }));
        settle();
    }
    // The five lists, and the headers above them, of the page and of the chooser.
    struct Table {
        std::array<Widget, 5> lists;
        std::array<Widget, 5> headers;
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
        const char* const names[] = {"*LblDPName", "*LblDPVersion", "*LblDPCompany", "*LblDPFile", "*LblDPDate"};
        std::transform(std::begin(names), std::end(names), table.headers.begin(),
                       [](const char* name) { return child(DlgDriverPopup, name); });
        return table;
    }
    static std::vector<std::optional<int>> selections(const Table& table) {
        std::vector<std::optional<int>> rows;
        std::transform(table.lists.begin(), table.lists.end(), std::back_inserter(rows), selectedRow);
        return rows;
    }

    ScopedEnvironment identification_{{"KVLIB", VH_TEST_IDENTIFICATION}};
};

TEST_F(ComponentPagesTest, DriversOfEveryKindStandInOrderWithAllTheirColumns) {
    const std::string longPath = "/opt/" + std::string(200, 'p') + "/libdrv.so";
    files.write(OdbcFiles::kDrivers,
                "[b]\nDriver=/opt/x/lib/libdrv.so\n[ODBC]\nTrace=0\n[A]\nDriver=" VH_TEST_SQLITE_DRIVER
                "\n[c]\nDriver=" VH_TEST_NO_COMPANY "\n[d]\nDriver=bare.so\n[f]\nDriver=" VH_TEST_LONG_COMPANY
                "\n[e]\nDriver=" +
                    longPath + "\n");
    // Dates are written as the locale has it, here one of the test's own.
    outputOf("localedef -c -i '" + files.write("dates", "LC_TIME\nd_fmt \"%Y~%d~%m\"\nEND LC_TIME\n") + "' '" +
             files.path("locale") + "'");
    const ScopedEnvironment locales{{"LOCPATH", files.path("")}};
    ASSERT_NE(std::setlocale(LC_TIME, "locale"), nullptr);
    open();
    std::setlocale(LC_TIME, "C.UTF-8");
    for (const Table& table : {page(), chooser()}) {
        const auto& [names, versions, companies, shownFiles, dates] = table.lists;
        EXPECT_EQ(rows(names), (Rows{"A", "b", "c", "d", "e", "f"}));
        EXPECT_EQ(rows(companies), (Rows{"Varnholt Technologies", " ", " ", " ", " ", VH_TEST_LONG_COMPANY_NAME}));
        EXPECT_EQ(rows(versions)[0].find("05.30.0002 (SQLite 3."), 0U) << rows(versions)[0];
        EXPECT_EQ(rows(versions)[1], " ");
        EXPECT_EQ(rows(versions)[2], "7.1");
        // A path is read into 128 bytes, of which the installer library leaves two.
        EXPECT_EQ(rows(shownFiles), (Rows{"vhsqlite23.so", "libdrv.so", "component_without_company.so", "bare.so",
                                          std::string(121, 'p'), "component_of_a_long_company.so"}));
        EXPECT_EQ(rows(dates)[0] + "\n", outputOf("date -r '" VH_TEST_SQLITE_DRIVER "' '+%Y~%d~%m'"));
        EXPECT_EQ(rows(dates)[1], " ");
    }
    click(TbDrivers);
    int row = 0;
    for (Widget column : page().lists) {
        XmListSelectPos(column, ++row, True);
        EXPECT_EQ(selections(page()), std::vector<std::optional<int>>(5, row));
    }
}

TEST_F(ComponentPagesTest, WithoutADriverTheListsAreSmallAndEmpty) {
    files.write(OdbcFiles::kDrivers, "");
    open();
    expectReport(Message::kDriverFileUnreadable);
    const auto expectSmall = [](const Table& table) {
        for (Widget list : table.lists) {
            EXPECT_EQ(placeOf(list).width, 100);
            EXPECT_EQ(placeOf(list).height, 25);
            EXPECT_EQ(rows(list), Rows{});
        }
    };
    openChooser();
    expectSmall(chooser());
    key(XK_Escape);
    click(TbDrivers);
    expectSmall(page());
}

TEST_F(ComponentPagesTest, TheChooserIsUsedFromEachColumnAndByKeyboard) {
    files.write(OdbcFiles::kDrivers,
                "[a]\nDriver=/a.so\nSetup=" VH_TEST_SETUP "\n[b]\nDriver=/b.so\nSetup=" VH_TEST_SETUP
                "\n[c]\nDriver=/c.so\nSetup=" VH_TEST_SETUP "\n");
    const ScopedEnvironment record{{"VH_TEST_RECORD", files.path("record")}};
    open();
    openChooser();
    const Place window = placeOf(ShODBCAdmin);
    const Place box = placeOf(XtParent(DlgDriverPopup));
    EXPECT_NEAR(box.x + box.width / 2, window.x + window.width / 2, 20);
    EXPECT_NEAR(box.y + box.height / 2, window.y + window.height / 2, 40);
    EXPECT_EQ(XmGetFocusWidget(DlgDriverPopup), LstDPName);

    const char* const drivers[] = {"c", "a", "b", "c", "a"};
    for (std::size_t i = 0; i < 5; ++i) {
        const int row = *drivers[i] - 'a' + 1;
        clickRow(chooser().lists[i], row);
        EXPECT_EQ(selections(chooser()), std::vector<std::optional<int>>(5, row));
        EXPECT_STREQ(CurrentDriver, drivers[i]);
    }
    for (Widget list : chooser().lists) {
        XmListDeselectAllItems(list);
    }
    XmListCallbackStruct nothing{};
    XtCallCallbacks(LstDPVersion, XmNbrowseSelectionCallback, &nothing);
    EXPECT_STREQ(CurrentDriver, "a");

    key(XK_Escape);
    EXPECT_FALSE(isVisible(XtParent(DlgDriverPopup)));
    openChooser();
    key(XK_Home);
    key(XK_Down);
    key(XK_Down);
    key(XK_Up);
    EXPECT_STREQ(CurrentDriver, "b");
    EXPECT_EQ(files.read("record"), "(missing)");
    key(XK_Return);
    EXPECT_NE(files.read("record").find(" b\n"), std::string::npos) << files.read("record");
    EXPECT_FALSE(isVisible(XtParent(DlgDriverPopup)));
}

TEST_F(ComponentPagesTest, ADriverWithoutALibraryIsReportedAndListed) {
    files.write(OdbcFiles::kDrivers, "[Plain]\nSetup=/s.so\n[Real]\nDriver=" VH_TEST_NO_COMPANY "\n");
    open();
    expectReport(Message::kDriverFileUnreadable);
    EXPECT_EQ(rows(LstName), (Rows{"Plain", "Real"}));
    EXPECT_EQ(rows(LstFile)[0], " ");
    EXPECT_EQ(rows(LstVersion), (Rows{" ", "7.1"}));
}

TEST_F(ComponentPagesTest, HeadersFollowTheColumnsAndAllOfThemCanBeReached) {
    files.write(OdbcFiles::kDrivers, "[" + std::string(90, 'n') + "]\nDriver=" VH_TEST_LONG_COMPANY "\n");
    open();
    const auto scrollEach = [](const Table& table) {
        Widget scrollBar = nullptr;
        XtVaGetValues(table.scrolledWindow, XmNhorizontalScrollBar, &scrollBar, nullptr);
        int value = 0;
        int slider = 0;
        int increment = 0;
        int pageSize = 0;
        int maximum = 0;
        XmScrollBarGetValues(scrollBar, &value, &slider, &increment, &pageSize);
        XtVaGetValues(scrollBar, XmNmaximum, &maximum, nullptr);
        const int before = placeOf(table.lists[4]).x;
        for (const int scrolled : {40, maximum - slider}) {
            XmScrollBarSetValues(scrollBar, scrolled, slider, increment, pageSize, True);
            settle();
            EXPECT_EQ(placeOf(table.lists[4]).x, before - scrolled);
            for (std::size_t i = 0; i < 5; ++i) {
                EXPECT_NEAR(placeOf(table.lists[i]).x, placeOf(table.headers[i]).x, 2);
                EXPECT_EQ(placeOf(table.lists[i]).width, placeOf(table.headers[i]).width);
            }
        }
        const Place view = placeOf(table.scrolledWindow);
        EXPECT_LE(placeOf(table.lists[4]).x + placeOf(table.lists[4]).width, view.x + view.width);
    };
    openChooser();
    scrollEach(chooser());
    key(XK_Escape);
    click(TbDrivers);
    scrollEach(page());
}

TEST_F(ComponentPagesTest, AboutAlwaysHasItsFourRows) {
    open();
    click(TbAbout);
    char icu[U_MAX_VERSION_STRING_LENGTH];
    UVersionInfo version;
    u_getVersion(version);
    u_versionToString(version, icu);
    EXPECT_EQ(rows(LstAbtFile), (Rows{"odbcadmin", "odbccurs", "libodbc", "libvhicu23"}));
    // The texts of rows 3 and 4 have crossed numbers.
    EXPECT_EQ(rows(LstAbtDesc),
              (Rows{catalogText(Message::kAboutAdministrator), catalogText(Message::kAboutCursorLibrary),
                    catalogText(Message::kAboutDriverManager), catalogText(Message::kAboutConversionLibrary)}));
    EXPECT_EQ(rows(LstAbtVersion)[0], "05.30.0002 (B0023, U0021)");
    EXPECT_EQ(std::u16string(getFileVersionStringW()), u"05.30.0002 (B0023, U0021)");
    EXPECT_STREQ(getCompanyNameString(), "Varnholt Technologies");
    EXPECT_EQ(rows(LstAbtVersion)[1].find("2."), 0U) << rows(LstAbtVersion)[1];
    EXPECT_EQ(rows(LstAbtVersion)[2].find("03."), 0U) << rows(LstAbtVersion)[2];
    EXPECT_EQ(rows(LstAbtVersion)[3], icu);
    clickRow(LstAbtVersion, 3);
    EXPECT_EQ(selectedRow(LstAbtDesc), 3);
    EXPECT_EQ(selectedRow(LstAbtFile), 3);
}

TEST_F(ComponentPagesTest, WithoutItsLibrariesAboutShowsNoVersions) {
    identification_.set("KVLIB", "/nowhere");
    open();
    EXPECT_EQ(rows(LstAbtVersion).size(), 4U);
    EXPECT_EQ(rows(LstAbtVersion)[3], "");
    EXPECT_EQ(rows(LstAbtFile)[3], "libvhicu23");
}

}  // namespace

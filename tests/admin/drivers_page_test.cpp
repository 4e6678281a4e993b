#include "tests/support/window_test.h"

#include <Xm/List.h>
#include <Xm/ScrollBar.h>
#include <sys/stat.h>
#include <unicode/uversion.h>

#include <ctime>

#include "admin/about_page.h"
#include "admin/driver_chooser.h"
#include "admin/drivers_page.h"
#include "admin/globals.h"
#include "admin/lists.h"
#include "admin/main_window.h"
#include "motifutil/catalog_text.h"

using Rows = std::vector<std::string>;

namespace {

class ComponentPagesTest : public WindowTest {
protected:
    ScopedEnvironment identification_{{"KVLIB", VH_TEST_IDENTIFICATION}};
};

TEST_F(ComponentPagesTest, DriversOfEveryKindStandInOrderWithAllTheirColumns) {
    const std::string longPath = "/opt/" + std::string(200, 'p') + "/libdrv.so";
    files.write(OdbcFiles::kDrivers,
                "[b]\nDriver=/opt/x/lib/libdrv.so\n[ODBC]\nTrace=0\n[A]\nDriver=" VH_TEST_SQLITE_DRIVER
                "\n[c]\nDriver=" VH_TEST_NO_COMPANY "\n[d]\nDriver=bare.so\n[e]\nDriver=" +
                    longPath + "\n");
    open();
    const Rows libraries{"vhsqlite23.so", "libdrv.so", "component_without_company.so", "bare.so", " "};
    for (const auto& [names, versions, companies, shownFiles, dates] :
         {std::array{LstName, LstVersion, LstCompany, LstFile, LstDate},
          std::array{LstDPName, LstDPVersion, LstDPCompany, LstDPFile, LstDPDate}}) {
        EXPECT_EQ(rows(names), (Rows{"A", "b", "c", "d", "e"}));
        EXPECT_EQ(rows(companies), (Rows{"Varnholt Technologies", " ", " ", " ", " "}));
        EXPECT_EQ(rows(versions)[0].find("05.30.0002 (SQLite 3."), 0U) << rows(versions)[0];
        EXPECT_EQ(rows(versions)[1], " ");
        EXPECT_EQ(rows(versions)[2], "7.1");
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(rows(shownFiles)[i], libraries[i]);
        }
        struct stat library {};
        stat(VH_TEST_SQLITE_DRIVER, &library);
        std::tm built{};
        localtime_r(&library.st_mtime, &built);
        char year[3];
        std::strftime(year, sizeof year, "%y", &built);
        EXPECT_TRUE(rows(dates)[0].ends_with(year)) << rows(dates)[0];
        EXPECT_EQ(rows(dates)[1], " ");
    }
    click(TbDrivers);
    const Widget columns[] = {LstName, LstVersion, LstCompany, LstFile, LstDate};
    int row = 0;
    for (Widget column : columns) {
        XmListSelectPos(column, ++row, True);
        for (Widget other : columns) {
            EXPECT_EQ(selectedRow(other), row);
        }
    }
}

TEST_F(ComponentPagesTest, ADriverWithoutALibraryIsReportedAndListed) {
    files.write(OdbcFiles::kDrivers, "[Plain]\nSetup=/s.so\n[Real]\nDriver=" VH_TEST_NO_COMPANY "\n");
    open();
    expectReport(Message::kDriverFileUnreadable);
    EXPECT_EQ(rows(LstName), (Rows{"Plain", "Real"}));
    EXPECT_EQ(rows(LstFile)[0], " ");
    EXPECT_EQ(rows(LstVersion), (Rows{" ", "7.1"}));
}

TEST_F(ComponentPagesTest, HeadersFollowTheColumns) {
    files.write(OdbcFiles::kDrivers, "[" + std::string(90, 'n') + "]\nDriver=" VH_TEST_SQLITE_DRIVER "\n");
    open();
    click(TbDrivers);
    const std::pair<Widget, Widget> columns[] = {{LstName, LbColName},
                                                 {LstVersion, LbColVersion},
                                                 {LstCompany, LbColCompany},
                                                 {LstFile, LbColFile},
                                                 {LstDate, LbColDate}};
    const int before = placeOf(LstDate).x;
    Widget scrollBar = nullptr;
    XtVaGetValues(child(FrmDrivers, "*scrolledWin2"), XmNhorizontalScrollBar, &scrollBar, nullptr);
    int value = 0;
    int slider = 0;
    int increment = 0;
    int page = 0;
    XmScrollBarGetValues(scrollBar, &value, &slider, &increment, &page);
    XmScrollBarSetValues(scrollBar, 40, slider, increment, page, True);
    settle();
    EXPECT_EQ(placeOf(LstDate).x, before - 40);
    for (const auto& [list, header] : columns) {
        EXPECT_NEAR(placeOf(list).x, placeOf(header).x, 2);
        EXPECT_EQ(placeOf(list).width, placeOf(header).width);
    }
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

#include "kvini/install_dir.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "kvlib/catalog.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

namespace {

TEST(InstallDir, ComesFromTheFirstSourceThatKnowsIt) {
    const std::string odbc = "[ODBC]\nInstallDir=/from/odbc\n";
    const std::string driver = "[odbc]\ninstalldir = /from/drivers  \n";
    const struct {
        const char *label, *given;
        std::optional<std::string> variable;
        std::string odbcIni, driverIni, expected;
    } rows[] = {
        {"given", "/given", "/var", odbc, driver, "/given"},
        {"given empty", "", "/var", odbc, driver, ""},
        {"variable", nullptr, "/var", odbc, driver, "/var"},
        {"variable empty: only the driver file is read", nullptr, "", odbc, driver, "/from/drivers"},
        {"data source file", nullptr, {}, odbc, driver, "/from/odbc"},
        {"driver file", nullptr, {}, "", driver, "/from/drivers"},
        {"white space and one slash", nullptr, "/opt/x// \t ", "", "", "/opt/x/"},
        {"slash before white space after a slash", nullptr, "/opt/x/ /", "", "", "/opt/x/ "},
        {"root becomes empty", nullptr, "/", "", "", ""},
        {"a first blank stays", nullptr, "   ", "", "", " "},
        {"cut to the array", nullptr, std::string(3000, 'd'), "", "", std::string(1024, 'd')},
    };
    const TemporaryFolder folder;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const ScopedEnvironment environment{{"ODBCINI", folder.write("odbc.ini", row.odbcIni)},
                                            {"ODBCINST", folder.write("odbcinst.ini", row.driverIni)},
                                            {"VH_INSTALLDIR", row.variable}};
        EXPECT_EQ(bosSetInstallDir(row.given), row.expected.empty() ? 1U : 0U);
        EXPECT_EQ(std::string(InstallDirLocation), row.expected);
    }
    bosSetInstallDir("");
}

}  // namespace

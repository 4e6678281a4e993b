#include "kvini/install_dir.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "kvlib/catalog.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

namespace {

TEST(InstallDir, ComesFromTheFirstSourceThatKnowsIt) {
    using Value = std::optional<std::string>;
    const std::string odbc = "[ODBC]\nInstallDir=/from/odbc\n";
    const std::string driver = "[odbc]\ninstalldir = /from/drivers  \n";
    const struct {
        const char *label, *given;
        Value variable, odbcIni, driverIni;
        std::string expected;
    } rows[] = {
        {"given", "/given", "/var", odbc, driver, "/given"},
        {"given empty", "", "/var", odbc, driver, ""},
        {"variable", nullptr, "/var", odbc, driver, "/var"},
        {"variable empty: only the driver file is read", nullptr, "", odbc, driver, "/from/drivers"},
        {"data source file", nullptr, {}, odbc, driver, "/from/odbc"},
        {"data source file without the entry", nullptr, {}, "[ODBC]\nTrace=1\n", driver, "/from/drivers"},
        {"nothing", nullptr, {}, {}, {}, ""},
        {"white space at the end", nullptr, "/opt/x/ \t ", {}, {}, "/opt/x"},
        {"only one slash goes", nullptr, "/opt/x//", {}, {}, "/opt/x/"},
        {"slash before white space after a slash", nullptr, "/opt/x/ /", {}, {}, "/opt/x/ "},
        {"root becomes empty", nullptr, "/", {}, {}, ""},
        {"a first blank stays", nullptr, "   ", {}, {}, " "},
        {"cut to the array", nullptr, std::string(3000, 'd'), {}, {}, std::string(1024, 'd')},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const TemporaryFolder home;
        const ScopedEnvironment environment{{"HOME", home.path()}, {"ODBCINI", {}},
                                            {"ODBC_INI", {}},      {"ODBCINST", {}},
                                            {"ODBCINSTINI", {}},   {"VH_INSTALLDIR", row.variable}};
        if (row.odbcIni) {
            home.write(".odbc.ini", *row.odbcIni);
        }
        if (row.driverIni) {
            home.write(".odbcinst.ini", *row.driverIni);
        }
        EXPECT_EQ(bosSetInstallDir(row.given), row.expected.empty() ? 1U : 0U);
        EXPECT_EQ(std::string(InstallDirLocation), row.expected);
    }
    bosSetInstallDir("");
}

}  // namespace

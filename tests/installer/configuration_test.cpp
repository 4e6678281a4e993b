#include "installer/configuration.h"

#include <gtest/gtest.h>
#include <odbcinst.h>
#include <sys/stat.h>

#include "installer/configuration_reader.h"
#include "installer/drivers.h"
#include "installer/plain_text.h"
#include "tests/support/odbc_files.h"

using namespace std::string_literals;
using Names = std::vector<std::string>;

namespace {

class ConfigurationTest : public testing::Test {
protected:
    void SetUp() override { installer::useUserConfiguration(); }
    static installer::NameList keys(const std::string& section,
                                    installer::Growth growth = installer::Growth::kByKilobyte) {
        return installer::listKeys(section, installer::kDataSourceFile, growth);
    }
    static std::string value(const std::string& section, const std::string& key) {
        return installer::readValue(section, key, installer::kDataSourceFile);
    }

    OdbcFiles files;
};

TEST_F(ConfigurationTest, NoListIsCutShort) {
    using Case = std::pair<int, std::size_t>;  // how many, and how long each
    // Around the size of the first buffer, far beyond it, and with the longest names that the library keeps.
    for (const auto& [count, length] :
         {Case{1, 20}, {93, 21}, {97, 20}, {98, 20}, {500, 21}, {2, 990}, {3, 990}, {40, 990}, {3000, 6}}) {
        Names names;
        std::string file = "[S]\n";
        for (int i = 0; i < count; ++i) {
            const std::string number = std::to_string(i);
            names.push_back("n" + std::string(length - number.size() - 1, '0') + number);
            file += names.back() + "=x\n";
        }
        files.write(OdbcFiles::kUser, file);
        for (const auto growth : {installer::Growth::kByKilobyte, installer::Growth::kByDoubling}) {
            EXPECT_EQ(keys("S", growth).names, names) << count << " names of " << length;
        }
    }
}

TEST_F(ConfigurationTest, WhatCanNotBeReadIsEmptyAndNotCreated) {
    files.write("file", "");
    const ScopedEnvironment nowhere{{"ODBCINI", files.path("file/x.ini")}};
    EXPECT_LT(keys("S").length, 1);
    EXPECT_EQ(value("S", "k"), "");
    const std::string file = files.path("a.dsn");
    EXPECT_EQ(installer::readValue("ODBC", "Driver", file), "");
    EXPECT_EQ(installer::listKeys("ODBC", file, installer::Growth::kByDoubling).names, Names());
    EXPECT_EQ(files.read("a.dsn"), "(missing)");
    mkfifo(files.path("pipe").c_str(), 0600);  // to be opened by nobody
    EXPECT_EQ(installer::readValue("ODBC", "Driver", files.path("pipe")), "");
    files.write("a.dsn", "[ODBC]\nDriver=X\n");
    EXPECT_EQ(installer::readValue("ODBC", "Driver", file), "X");
}

TEST_F(ConfigurationTest, ReadingFollowsOtherPrograms) {
    for (const std::string text : {"old", "new"}) {
        files.write(OdbcFiles::kUser, "[S]\nk=" + text + "\n");
        EXPECT_EQ(value("S", "k"), text);
        EXPECT_EQ(value("s", "K"), text) << "case does not count";
    }
    EXPECT_EQ(files.read(OdbcFiles::kUser), "[S]\nk=new\n");
    // Missing names are not taken for "all of them".
    EXPECT_EQ(value("", "k") + value("S", ""), "");
    EXPECT_EQ(keys("").names, Names());
}

TEST_F(ConfigurationTest, TheReaderTellsOfOneTextWhatTheLibraryDoes) {
    const auto longest = "[S]\nk=" + std::string(997, 'v') + "\n";
    const Names texts{"", "[S]\nk = a = b \n# c\n;c\n\nj=[x] \"y\" #z\nempty=\n[ODBC Data Sources]\nk=v\n[t]\nk=1\n",
                      longest, "[S]\nk=v",
                      // Not plain from here on.
                      longest.substr(0, 7) + longest.substr(5), "[S]\nk\n", "[S]\n=v\nj=1\n", "[S]\n k=v\n",
                      "[S]\r\nk=v\r\n", "[S]\nk=\vv\n", "[S]\nk=v\0w\n"s, "[S]\nk=1\nj=2\nK=3\n",
                      "[S]\nk=1\n[t]\n[s]\nj=2\n", "k=v\n[S]\nk=v\n", " [S]\nk=v\n", "[S] x\nk=v\n", "[S\nk=v\n",
                      "[ S]\nk=v\n", "[x]\n[]\nk=v\n", "[S]]\nk=v\n"};
    for (const std::string& text : texts) {
        EXPECT_EQ(installer::isPlain(text), &text - texts.data() < 4) << text;
        files.write(OdbcFiles::kUser, text);
        for (const std::string& file : {std::string(installer::kDataSourceFile), files.path(OdbcFiles::kUser)}) {
            installer::ConfigurationReader reader(file);
            for (const std::string section : {"s", "T", "odbc data sources", ""}) {
                const Names names = keys(section).names;
                EXPECT_EQ(reader.listKeys(section, installer::Growth::kByDoubling).names, names) << text;
                for (const std::string key : {"K", "j", "empty", "none", ""}) {
                    EXPECT_EQ(reader.readValue(section, key), value(section, key)) << text;
                }
            }
        }
    }
    files.write(OdbcFiles::kUser, "[S]\nk=12345\ne=\nq=x=y\n");
    installer::ConfigurationReader reader(installer::kDataSourceFile);
    files.write(OdbcFiles::kUser, "[S]\nj=new\n");
    EXPECT_EQ(installer::attributeList(reader.readSection("S")), "k=12345\0e=\0q=x=y\0\0"s);
    EXPECT_EQ(reader.readValue("S", "k", 4), "123");
    EXPECT_EQ(keys("S").names, Names{"j"}) << "the library has the file again";
}

TEST_F(ConfigurationTest, EverySectionButOneIsADriver) {
    EXPECT_EQ(installer::listDrivers().names, Names());
    files.write(OdbcFiles::kDrivers, "[b]\nDriver=x\n[ODBC]\nTrace=0\n[A]\nDriver=y\n[Empty]\n");
    EXPECT_EQ(installer::listDrivers().names, (Names{"b", "A", "Empty"}));
    // More than the 16-bit length can tell: what fits is whole.
    std::string file;
    for (int i = 10000; i < 18000; ++i) {
        file += "[driver " + std::to_string(i) + "]\nDriver=x\n";
    }
    files.write(OdbcFiles::kDrivers, file);
    const Names drivers = installer::listDrivers().names;
    ASSERT_GT(drivers.size(), 5000U);
    for (std::size_t i = 0; i < drivers.size(); ++i) {
        EXPECT_EQ(drivers[i], "driver " + std::to_string(10000 + i));
    }
}

TEST_F(ConfigurationTest, TheLibraryForProgramsOf64BitsCountsWhereTheOtherIsOfNoUse) {
    const std::string wide = files.write("wide.so", "\177ELF\002");
    const std::string narrow = files.write("narrow.so", "\177ELF\001");
    const std::string rows[][3] = {{"", wide, wide},      {"", "/none64.so", "/none64.so"},
                                   {narrow, wide, wide},  {"/none.so", "/none64.so", "/none.so"},
                                   {wide, "/x.so", wide}, {"/none.so", wide, wide}};
    for (const auto& [plain, for64, expected] : rows) {
        files.write(OdbcFiles::kDrivers,
                    "[d]\nDriver=" + plain + "\nDriver64=" + for64 + "\nSetup=" + plain + "\nSetup64=" + for64 + "\n");
        EXPECT_EQ(installer::driverLibrary("d"), expected);
        EXPECT_EQ(installer::setupLibrary("d"), expected);
    }
}

}  // namespace

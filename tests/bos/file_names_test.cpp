#include "bos/file_names.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "bos/file.h"
#include "bos/host.h"
#include "kvlib/text.h"
#include "tests/support/error_collector.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace OpenFlag;

constexpr std::uint32_t kResolve = kResolveOnly | kRecogniseNames;

TEST(ConfigurationFileNames, LeadToTheirFiles) {
    const struct {
        const char *label, *name;
        std::vector<ScopedEnvironment::Setting> variables;  // beside HOME, which is "home" unless given
        std::vector<std::string> files;
        const char* expected;  // path, or the error's number
        std::uint32_t flags = kResolve;
    } rows[] = {
        {"without the dot, in any case", "Odbc.ini", {}, {"home/Odbc.ini"}, "home/Odbc.ini"},
        {"first variable, before home",
         ".odbc.ini",
         {{"ODBCINI", "v"}, {"ODBC_INI", "w"}},
         {"home/.odbc.ini", "v"},
         "v"},
        {"variable to nowhere does not lead home", ".ODBC.ini", {{"ODBC_INI", "v"}}, {"home/.ODBC.ini"}, "1509"},
        {"missing, though it is to be created", ".odbc.ini", {}, {}, "1509", kRecogniseNames | kCreate},
        {"driver file", "OdbcInst.ini", {{"ODBCINSTINI", "w"}}, {"w"}, "w"},
        {"own file: home wins", ".kvlib.ini", {{"KVLIB_INI", "v"}}, {"home/.kvlib.ini", "v"}, "home/.kvlib.ini"},
        {"own file: variable is the fallback", ".kvlib.ini", {{"KVLIB_INI", "v"}}, {}, "v"},
        {"own file: case counts", ".KVLIB.ini", {{"KVLIB_INI", "v"}}, {}, ".KVLIB.ini"},
        {"system defaults", ".system.defaults", {{"KV_SYSTEM_INI", "v"}}, {}, "v"},
        {"no home", ".kvlib.ini", {{"HOME", {}}}, {}, ".kvlib.ini"},
        {"too long", ".kvlib.ini", {{"HOME", std::string(1020, 'h')}}, {}, "30041"},
        {"unless asked for", "some.ini", {}, {}, "home/some.ini", kResolve | kHomeRelative},
        {"no recognition", ".odbc.ini", {{"ODBCINI", "v"}}, {"v"}, ".odbc.ini", kResolveOnly},
    };
    const auto before = std::filesystem::current_path();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const TemporaryFolder folder;
        std::filesystem::current_path(folder.path());
        ScopedEnvironment environment{{"HOME", "home"},    {"ODBCINI", {}},   {"ODBC_INI", {}},     {"ODBCINST", {}},
                                      {"ODBCINSTINI", {}}, {"KVLIB_INI", {}}, {"KV_SYSTEM_INI", {}}};
        for (const auto& [variable, value] : row.variables) {
            environment.set(variable, value);
        }
        for (const std::string& file : row.files) {
            folder.write(file, "");
        }
        ErrorCollector errors;
        char name[kPathSize];
        strCopy(name, sizeof name, row.name);
        int descriptor = -1;
        EXPECT_EQ(bosFileOpen(name, row.flags, &descriptor) != 0 ? errors.numbers() : std::string(name), row.expected);
        EXPECT_TRUE(errors.numbers() != "30041" || name == std::string(row.name)) << "changed on the way";
    }
    std::filesystem::current_path(before);
    const ScopedEnvironment environment{{"HOME", "/h"}, {"KVLIB_INI", {}}};
    char16_t wide[kPathSize] = u".kvlib.ini";
    int descriptor = 0;
    EXPECT_EQ(bosFileOpen(wide, kResolve, &descriptor), 0);
    EXPECT_EQ(std::u16string(wide), u"/h/.kvlib.ini");
}

TEST(Paths, AreJoinedAndSplit) {
    const std::string longest(kPathSize - 1, 'n');
    const struct {
        const char* directory;
        std::string name;
        const char* extension;
        std::string path;  // "" when it is too long
    } rows[] = {
        {"/d", "n.d/n", "ini", "/d/n.d/n.ini"}, {"/d/", "n", ".ini", "/d/n.ini"},     {"/d", "/n.old", "ini", "/n.old"},
        {"d", ".n", "ini", "d/.n.ini"},         {nullptr, longest, nullptr, longest}, {"", longest, "i", ""},
    };
    char path[kPathSize];
    ErrorCollector errors;
    for (const auto& row : rows) {
        EXPECT_EQ(bospath(path, row.directory, row.name.c_str(), row.extension), row.path.empty() ? 1 : 0);
        EXPECT_EQ(std::string(path), row.path);
    }
    using Value = std::optional<std::string>;
    for (const auto& [home, kv, expected] : {std::tuple<Value, Value, std::string>{"/h/", "/k", "/h/n"},
                                             {{}, "/k", "/k/n"},
                                             {{}, {}, std::filesystem::current_path() / "n"}}) {
        const ScopedEnvironment environment{{"HOME", home}, {"KV", kv}};
        strCopy(path, sizeof path, "n");
        EXPECT_EQ(boshpath(path), 0);
        EXPECT_EQ(std::string(path), expected);
    }
    for (const auto& [whole, directoryPart] : {std::pair{"/a/b", "/a"}, {"/b", "/"}, {"b", ""}}) {
        char name[kPathSize];
        EXPECT_EQ(bosParseName(whole, path, name), 0);
        EXPECT_STREQ(path, directoryPart);
        EXPECT_STREQ(name, "b");
    }
    EXPECT_EQ(bosParseName((longest + "n/n").c_str(), path, nullptr), 1);
    EXPECT_EQ(errors.numbers(), "30041 30041");
}

TEST(FoundFiles, AreNamedByAPatternAndNothingElse) {
    const TemporaryFolder folder;
    folder.write("a.dsn", "");
    std::vector<std::string> found;
    EXPECT_EQ(bosFindFiles(folder.path("*.dsn").c_str(), found), 0);
    EXPECT_EQ(found, std::vector{folder.path("a.dsn")});
    const std::string touch = "touch " + folder.path("new");
    for (const std::string& pattern : {"$(" + touch + ")", "c\nEOT\n" + touch}) {
        EXPECT_EQ(bosFindFiles(pattern.c_str(), found), 1) << pattern;
        EXPECT_TRUE(found.empty());
    }
    EXPECT_EQ(folder.read("new"), "(missing)");

    char command[6];
    EXPECT_EQ(bosGetCommand(getpid(), command, sizeof command), 0);
    EXPECT_STREQ(command, "unit_");
    ErrorCollector errors;
    EXPECT_EQ(bosFindFiles(folder.path("*.ini").c_str(), found) + bosGetMachineName(command, 1) +
                  bosGetHostUser(command, 1) + bosGetCommand(-1, command, sizeof command) +
                  bosGetEnv(u"KV_UNSET", nullptr, 0),
              5);
    EXPECT_EQ(errors.numbers(), "1509 30041 30041 30041 30041");
}

}  // namespace

// What components say about themselves, and what they let others see.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <odbcinstext.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <string>

#include "tests/support/odbc_files.h"
#include "tests/support/program.h"

namespace {

using Library = std::unique_ptr<void, int (*)(void*)>;

Library load(const char* path) {
    Library library(dlopen(path, RTLD_NOW | RTLD_LOCAL), dlclose);
    EXPECT_NE(library, nullptr) << dlerror();
    return library;
}

template <typename Text>
std::basic_string<Text> answer(const Library& library, const char* question) {
    const auto function = reinterpret_cast<const Text* (*)()>(dlsym(library.get(), question));
    return function == nullptr ? std::basic_string<Text>() : std::basic_string<Text>(function());
}

TEST(Components, TheSqliteDriverConnectsAndNamesTheSqliteThatAnswersIfAny) {
    // The one that answers on a connection through the driver manager.
    const OdbcFiles files;
    const std::string connection = "DRIVER=" VH_TEST_SQLITE_DRIVER ";Database=" + files.path("test.db");
    std::string sqlite = outputOf("echo 'select sqlite_version()' | isql -b -d, -k '" + connection + "'");
    ASSERT_TRUE(sqlite.starts_with("3.")) << sqlite;
    sqlite.pop_back();
    const Library driver = load(VH_TEST_SQLITE_DRIVER);
    const std::string version = "05.30.0002 (SQLite " + sqlite + ")";
    EXPECT_EQ(answer<char>(driver, "getFileVersionString"), version);
    EXPECT_EQ(answer<char16_t>(driver, "getFileVersionStringW"), std::u16string(version.begin(), version.end()));
    EXPECT_EQ(answer<char>(driver, "getCompanyNameString"), "Varnholt Technologies");
    EXPECT_NE(dlsym(driver.get(), "ODBCINSTGetProperties"), nullptr) << "the driver behind is not reached";
    EXPECT_EQ(answer<char>(load(VH_TEST_LONELY_COMPONENT), "getFileVersionString"), "05.30.0002");
}

TEST(Components, ThePostgresqlDriverIsDescribedByItsOwnKeys) {
    const Library driver = load(VH_TEST_POSTGRESQL_DRIVER);
    const auto describe = reinterpret_cast<int (*)(HODBCINSTPROPERTY)>(dlsym(driver.get(), "ODBCINSTGetProperties"));
    Dl_info real{};
    ASSERT_TRUE(describe != nullptr && dladdr(dlsym(driver.get(), "SQLDriverConnect"), &real) != 0);
    auto* first = static_cast<HODBCINSTPROPERTY>(std::calloc(1, sizeof(ODBCINSTPROPERTY)));
    ASSERT_EQ(describe(first), 1);
    std::set<std::string> seen;
    for (const ODBCINSTPROPERTY* property = first->pNext; property != nullptr; property = property->pNext) {
        const std::string key = property->szName;
        SCOPED_TRACE(key);
        const std::string asked = "strings -a '" + std::string(real.dli_fname) + "' | grep -ciFx " + key;
        EXPECT_NE(outputOf(asked), "0\n") << "the driver does not know the keyword";
        EXPECT_TRUE(seen.insert(key).second) << "twice";
        EXPECT_EQ(property->nPromptType == ODBCINST_PROMPTTYPE_TEXTEDIT_PASSWORD, key == "Password");
        EXPECT_EQ(property->nPromptType == ODBCINST_PROMPTTYPE_LISTBOX, property->aPromptData != nullptr);
        bool isOffered = property->aPromptData == nullptr;
        for (char** choice = property->aPromptData; !isOffered && *choice != nullptr; ++choice) {
            isOffered = std::string(property->szValue) == *choice;
        }
        EXPECT_TRUE(isOffered) << "the default is none of the choices";
    }
    for (const char* key : {"Servername", "Port", "Database", "Username", "Password", "SSLmode"}) {
        EXPECT_EQ(seen.count(key), 1U) << key;
    }
    ODBCINSTDestructProperties(&first);
}

TEST(Components, NothingElseIsExported) {
    const std::string identification = "getCompanyNameString getFileVersionString getFileVersionStringW ";
    const auto exported = [](const char* library) {
        return outputOf("nm -D --defined-only -j '" + std::string(library) + "' | LC_ALL=C sort | tr '\\n' ' '");
    };
    EXPECT_EQ(exported(VH_TEST_SQLITE_DRIVER), identification);
    EXPECT_EQ(exported(VH_TEST_SETUP_LIBRARY), "ConfigDSN ConfigFileDSN " + identification);
}

}  // namespace

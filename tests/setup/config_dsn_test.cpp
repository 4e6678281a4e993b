// The setup library as any program calls it without a window.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <odbcinst.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>

#include "tests/support/full_disk.h"
#include "tests/support/odbc_files.h"
#include "tests/support/program.h"

using namespace std::string_literals;

namespace {

constexpr unsigned int kBadName = ODBC_ERROR_INVALID_DSN;
constexpr unsigned int kBadValue = ODBC_ERROR_INVALID_KEYWORD_VALUE;

// With a comment, which any write would drop.
constexpr const char* kTwo =
    "# mine\n[ODBC Data Sources]\nSales=Drv\nStock=Drv\n\n[Sales]\nDriver=Drv\nDatabase=/s.db\nOdd Key=kept = "
    "so\nEmpty=\n\n"
    "[Stock]\nDriver=/drv.so\nDatabase=/k.db\nGone=1\n\n[ODBC]\nTrace=0\n";
// The same as read by OdbcFiles::summary().
const std::string kSales = "Sales{Driver=Drv|Database=/s.db|Odd Key=kept = so|Empty=} ";
const std::string kStockAndTrace = "Stock{Driver=/drv.so|Database=/k.db|Gone=1} ODBC{Trace=0}";
const std::string kListed = "ODBC Data Sources{Sales=Drv|Stock=Drv} ";

class ConfigDsnTest : public testing::Test {
protected:
    ConfigDsnTest() { files.write(OdbcFiles::kDrivers, "[Drv]\nDriver=/drv.so\n\n[Other]\nDriver=/other.so\n"); }

    // Calls ConfigDSN, or for a file ConfigFileDSN, with attributes between bars, none for "". The code of the
    // installer error that it left, 0 for success.
    unsigned int call(WORD request, const char* driver, std::string attributes, const char* fileName = nullptr) {
        std::replace(attributes.begin(), attributes.end(), '|', '\0');
        attributes += '\0';
        const char* list = attributes.size() == 1 ? nullptr : attributes.c_str();
        const BOOL done = fileName == nullptr
                              ? entry<BOOL(HWND, WORD, LPCSTR, LPCSTR)>("ConfigDSN")(nullptr, request, driver, list)
                              : entry<BOOL(HWND, WORD, LPCSTR, LPCSTR, LPCSTR)>("ConfigFileDSN")(
                                    nullptr, request, driver, list, fileName);
        char text[2000] = "";
        WORD length = 0;
        DWORD code = 0;
        EXPECT_EQ(SQLInstallerError(1, &code, text, sizeof text, &length), done ? SQL_NO_DATA : SQL_SUCCESS);
        errorText = text;
        return done ? 0 : code;
    }

    OdbcFiles files;
    ScopedEnvironment catalogs{{"VH_INSTALLDIR", VH_TEST_INSTALL_DIR}};
    std::string errorText;

private:
    template <typename Function>
    Function* entry(const char* name) {
        return reinterpret_cast<Function*>(dlsym(library_.get(), name));
    }

    std::unique_ptr<void, int (*)(void*)> library_{dlopen(VH_TEST_SETUP_LIBRARY, RTLD_NOW | RTLD_LOCAL), dlclose};
};

TEST_F(ConfigDsnTest, RequestsChangeWhatTheyNameAndNothingElse) {
    const std::string longest(995, 'v');
    const std::string longName(40, 'n');
    const auto expectChange = [this](const char* about, const std::string& before, WORD request, const char* driver,
                                     const std::string& attributes, const std::string& after) {
        files.write(OdbcFiles::kUser, before);
        EXPECT_EQ(call(request, driver, attributes), 0U) << about << errorText;
        EXPECT_EQ(files.summary(), after) << about;
    };
    expectChange("the first of all; another driver and empty values do not count, of one key twice the later one does",
                 "", ODBC_ADD_DSN, "Drv", "DRIVER=/evil.so|dsn= New |A=|B= b |c=1|C=2",
                 "New{Driver=Drv|B=b|c=2} ODBC Data Sources{New=Drv}");
    expectChange(
        "an existing name is replaced", kTwo, ODBC_ADD_DSN, "Other", "DSN=Sales|Server=h|Database=/s.db",
        "ODBC Data Sources{Sales=Other|Stock=Drv} Sales{Driver=Other|Database=/s.db|Server=h} " + kStockAndTrace);
    expectChange("configure keeps what is not named, whatever its spelling", kTwo, ODBC_CONFIG_DSN, "Drv",
                 "DSN=Sales|DATABASE=/new.db|Empty=|Extra=1",
                 kListed + "Sales{Driver=Drv|Database=/new.db|Odd Key=kept = so|Empty=|Extra=1} " + kStockAndTrace);
    expectChange(
        "another driver, and an empty value that deletes its key", kTwo, ODBC_CONFIG_DSN, "Other", "DSN=Stock|Gone=",
        "ODBC Data Sources{Sales=Drv|Stock=Other} " + kSales + "Stock{Driver=Other|Database=/k.db} ODBC{Trace=0}");
    expectChange("the same driver in another case is no other, and the driver's path stays", kTwo, ODBC_CONFIG_DSN,
                 "dRV", "DSN=Stock|GONE=1", kListed + kSales + kStockAndTrace);
    expectChange("the longest value, of a name that could not be given today",
                 "[" + longName + "]\nDriver=Drv\nKey=" + longest + "\nZ=1\n", ODBC_CONFIG_DSN, "Drv",
                 "DSN=" + longName + "|Key2=" + longest.substr(1) + "|Z=2",
                 longName + "{Driver=Drv|Key=" + longest + "|Z=2|Key2=" + longest.substr(1) + "} ODBC Data Sources{" +
                     longName + "=Drv}");
    expectChange("remove what is listed without settings", "[ODBC Data Sources]\nGhost=Drv\nB=Drv\n\n[B]\nDriver=Drv\n",
                 ODBC_REMOVE_DSN, nullptr, "DSN=Ghost", "ODBC Data Sources{B=Drv} B{Driver=Drv}");
}

TEST_F(ConfigDsnTest, WhatCanNotBeDoneHasItsReasonAndLikeNothingNewLeavesTheFileAlone) {
    const auto expectSame = [this](const char* about, WORD request, const char* driver, const std::string& attributes,
                                   unsigned int code, const char* textPart) {
        files.write(OdbcFiles::kUser, kTwo);
        EXPECT_EQ(call(request, driver, attributes), code) << about;
        EXPECT_NE(errorText.find(textPart), std::string::npos) << about << errorText;
        EXPECT_EQ(files.read(OdbcFiles::kUser), kTwo) << about;
    };
    expectSame("nothing new", ODBC_CONFIG_DSN, "Drv", "DSN=Sales|Driver=Drv|database=/s.db|B=", 0, "");
    expectSame("system request codes are not for drivers", ODBC_ADD_SYS_DSN, "Drv", "DSN=X",
               ODBC_ERROR_INVALID_REQUEST_TYPE, "4");
    expectSame("unknown driver", ODBC_ADD_DSN, "Nobody", "DSN=X", ODBC_ERROR_INVALID_NAME, "Nobody");
    expectSame("33 characters", ODBC_ADD_DSN, "Drv", "DSN=" + std::string(33, 'n'), kBadName, "32");
    expectSame("a name that would be a comment in the list", ODBC_ADD_DSN, "Drv", "DSN=#1", kBadName, "#1");
    expectSame("a section with a meaning", ODBC_ADD_DSN, "Drv", "DSN=odbc", kBadName, "odbc");
    expectSame("the list itself", ODBC_ADD_DSN, "Drv", "DSN=ODBC Data Sources", kBadName, "section");
    expectSame("remove nobody", ODBC_REMOVE_DSN, "Drv", "DSN=Nobody", kBadName, "Nobody");
    expectSame("no equals sign", ODBC_CONFIG_DSN, "Drv", "DSN=Sales|Trash", kBadValue, "");
    expectSame("a key that would be a comment", ODBC_CONFIG_DSN, "Drv", "DSN=Sales|B=2|#A=1", kBadValue, "#A");
    expectSame("a key that would be a section", ODBC_CONFIG_DSN, "Drv", "DSN=Sales|[A]=1", kBadValue, "[A]");
    expectSame("line break", ODBC_CONFIG_DSN, "Drv", "DSN=Sales|B=2|A=1\nTrace=1", kBadValue, "\"A\"");
    expectSame("too long", ODBC_CONFIG_DSN, "Drv", "DSN=Sales|Key=" + std::string(996, 'v'), kBadValue, "\"Key\"");
}

TEST_F(ConfigDsnTest, TheCallersModeDecidesWhoseDataSourcesAreMeantAndStays) {
    for (const UWORD mode : std::initializer_list<UWORD>{ODBC_BOTH_DSN, ODBC_USER_DSN, ODBC_SYSTEM_DSN}) {
        SCOPED_TRACE(mode);
        files.write(OdbcFiles::kUser, "");
        files.write(OdbcFiles::kSystem, "");
        SQLSetConfigMode(mode);
        EXPECT_EQ(call(ODBC_ADD_DSN, "Drv", "DSN=New"), 0U);
        UWORD after = 99;
        SQLGetConfigMode(&after);
        EXPECT_EQ(after, mode);
        EXPECT_EQ(files.read(OdbcFiles::kUser).empty(), mode == ODBC_SYSTEM_DSN);
        EXPECT_EQ(files.read(OdbcFiles::kSystem).empty(), mode != ODBC_SYSTEM_DSN);
    }
    SQLSetConfigMode(ODBC_BOTH_DSN);
    files.write("plain", "");
    const ScopedEnvironment unwritable{{"ODBCINI", files.path("plain/odbc.ini")}};
    EXPECT_EQ(call(ODBC_ADD_DSN, "Drv", "DSN=New"), unsigned{ODBC_ERROR_REQUEST_FAILED});
    EXPECT_NE(errorText.find("New"), std::string::npos) << errorText;
}

TEST_F(ConfigDsnTest, AFileDataSourceHoldsWhatItIsToldAndNoPasswordThatNobodyAskedToSave) {
    struct Case {
        const char *about, *before;
        WORD request;
        std::string attributes, after;
        mode_t mode;
    };
    for (const Case& test : {
             Case{"new, as the administrator asks for it", nullptr, ODBC_ADD_DSN,
                  "FILEDSN=/else.dsn|DRIVER=Evil|Database= /n.db|PWD=geheim", "[ODBC]\nDriver=Drv\nDatabase=/n.db\n",
                  0644},
             Case{"what is there is replaced, and its permission stays", "[ODBC]\nUID=old\n", ODBC_ADD_DSN, "",
                  "[ODBC]\nDriver=Drv\n", 0640},
             Case{"configured: what is not named stays, in other sections too, and a password makes it its owner's "
                  "alone",
                  "[ODBC]\nDRIVER={Drv}\nFILEDSN=/"
                  "a.dsn\nUID=u\nGone=1\nUnknown=1\nUID=z\ngone=2\nPWD=p\n\n[More]\nA=1\n",
                  ODBC_CONFIG_DSN, "DSN=/a.dsn| uid = v |PASSWORD=geheim|PWD=q|Gone=",
                  "[ODBC]\nDRIVER={Drv}\nFILEDSN=/a.dsn\nUID=v\nUnknown=1\nUID=z\nPWD=q\n\n[More]\nA=1\n", 0600},
             Case{"nothing new", "# mine\n[ODBC]\nDriver = Drv\nPWD=x\n", ODBC_CONFIG_DSN, "DSN=a|pwd=x",
                  "# mine\n[ODBC]\nDriver = Drv\nPWD=x\n", 0640},
         }) {
        SCOPED_TRACE(test.about);
        const std::string target = files.path("target.dsn");
        remove(target.c_str());
        remove(files.path("a.dsn").c_str());
        if (test.before != nullptr) {
            // Through a link, which stays one.
            files.write("target.dsn", test.before);
            chmod(target.c_str(), 0640);
            ASSERT_EQ(symlink("target.dsn", files.path("a.dsn").c_str()), 0);
        }
        EXPECT_EQ(call(test.request, "Drv", test.attributes, files.path("a").c_str()), 0U) << errorText;
        EXPECT_EQ(files.read("a.dsn"), test.after);
        struct stat status {};
        stat(files.path("a.dsn").c_str(), &status);
        EXPECT_EQ(status.st_mode & 07777, test.mode);
        EXPECT_EQ(lstat(files.path("a.dsn").c_str(), &status), 0);
        EXPECT_EQ(S_ISLNK(status.st_mode), test.before != nullptr);
    }
}

TEST_F(ConfigDsnTest, AFileThatCanNotBeSavedStaysAsItIs) {
    const std::string longLine = "[ODBC]\nDriver=Drv\nLong=" + std::string(200000, 'l') + "\n";
    std::string keys = "[ODBC]\nDriver=Drv\n";
    while (keys.size() < 3000) {
        keys += "Key" + std::to_string(keys.size()) + "=1\n";
    }
    files.write("long.dsn", longLine);
    files.write("full.dsn", keys);
    mkdir(files.path("folder.dsn").c_str(), 0777);
    const auto expectRefused = [this](WORD request, const std::string& file, unsigned int code) {
        const FullDisk disk(2048);
        EXPECT_EQ(call(request, "Drv", "UID=u", file.c_str()), code) << file;
        EXPECT_NE(errorText.find(code == ODBC_ERROR_INVALID_REQUEST_TYPE ? "3" : file.substr(0, 60)), std::string::npos)
            << errorText;
    };
    expectRefused(ODBC_REMOVE_DSN, files.path("full.dsn"), ODBC_ERROR_INVALID_REQUEST_TYPE);
    expectRefused(ODBC_CONFIG_DSN, files.path("gone.dsn"), ODBC_ERROR_INVALID_DSN);
    expectRefused(ODBC_ADD_DSN, "relative.dsn", ODBC_ERROR_INVALID_PATH);
    expectRefused(ODBC_ADD_DSN, "/" + std::string(1100, 'n'), ODBC_ERROR_INVALID_PATH);
    expectRefused(ODBC_ADD_DSN, files.path("none/a.dsn"), ODBC_ERROR_REQUEST_FAILED);
    expectRefused(ODBC_ADD_DSN, files.path("folder.dsn"), ODBC_ERROR_REQUEST_FAILED);
    for (const char* file : {"long.dsn", "full.dsn"}) {
        expectRefused(ODBC_CONFIG_DSN, files.path(file), ODBC_ERROR_REQUEST_FAILED);
    }
    EXPECT_EQ(files.read("long.dsn"), longLine);
    EXPECT_EQ(files.read("full.dsn"), keys);
    EXPECT_EQ(outputOf("ls -A '" + files.path("") + "'"), "folder.dsn\nfull.dsn\nlong.dsn\nodbcinst.ini\n");
}

}  // namespace

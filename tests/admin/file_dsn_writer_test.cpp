#include "tests/support/window_test.h"

#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <optional>

#include "admin/file_aside.h"
#include "admin/file_dsn_writer.h"
#include "admin/test_connect.h"
#include "admin/wizard_finish.h"
#include "installer/configuration.h"
#include "tests/support/child_process.h"
#include "tests/support/full_disk.h"
#include "tests/support/scoped_environment.h"

using namespace std::string_literals;

namespace {

class FileDsnFileTest : public WindowTest {
protected:
    FileDsnFileTest() { open(); }
    static std::string fullPath(const std::string& name) {
        replaceText(FileDSNName, name.c_str());
        return setFullPath() ? FileDSNName : "(none)";
    }
    static std::string connectionString(const std::string& attributes) {
        EXPECT_TRUE(createArray("X", attributes.c_str()));
        return std::string(TempStr.view());
    }
    ScopedEnvironment home_{{"HOME", "/home/u"}};
};

TEST_F(FileDsnFileTest, TheDefaultDirectoryComesFromTheFirstSourceThatKnowsIt) {
    struct Case {
        const char *file, *home;
        std::string directory;
    };
    const std::string longHome = "/" + std::string(2000, 'h');
    for (const Case& test : {Case{"[ODBC FILE DSN]\nDefaultDSNDir=/dsn\n[ODBC]\nInstallDir=/i\n", "/home/u", "/dsn/"},
                             Case{"[ODBC FILE DSN]\nDefaultDSNDir=\n[ODBC]\nInstallDir=/i/\n", "/home/u", "/i/"},
                             Case{"", "/home/u/", "/home/u/"}, Case{"", "", "./"},
                             Case{"", longHome.c_str(), longHome.substr(0, 1022) + "/"}}) {
        files.write(OdbcFiles::kUser, test.file);
        home_.set("HOME", test.home);
        char buffer[kFileDsnNameSize];
        getFileDSNDefaultDir(buffer);
        EXPECT_EQ(buffer, test.directory);
    }
}

TEST_F(FileDsnFileTest, NamesBecomeFullPathsThatFit) {
    EXPECT_EQ(fullPath("/tmp/a.dsn"), "/tmp/a.dsn");
    EXPECT_EQ(fullPath("/tmp/a.DSN"), "/tmp/a.DSN.dsn");
    home_.set("HOME", "");
    EXPECT_EQ(fullPath("a"), std::filesystem::current_path() / "a.dsn");
    EXPECT_EQ(fullPath("/" + std::string(1018, 'n')).size(), 1023U);
    EXPECT_EQ(fullPath("/" + std::string(1019, 'n')), "(none)");
    EXPECT_FALSE(checkPerm(FileDSNName));
    expectReport(Message::kFileNameTooLong);
}

TEST_F(FileDsnFileTest, TypedAttributesBecomeAConnectionString) {
    replaceText(FileDSNName, "a");
    const std::string begin = "FILEDSN=/home/u/a.dsn;DRIVER={X};";
    EXPECT_EQ(connectionString("UID=u\nPWD\nHost=h"), begin + "UID=u;Host=h;");
    EXPECT_EQ(connectionString("\n\nA=b=c\n\nOdbcDriver=1\n"), begin + "A=b=c;OdbcDriver=1;");
    // A first line that names the driver, and nothing counts; an empty one is a first line too.
    EXPECT_EQ(connectionString("mydriveroption=1\nUID=u"), begin);
    EXPECT_EQ(connectionString("\nmydriveroption=1\nUID=u"), begin + "mydriveroption=1;UID=u;");
    EXPECT_TRUE(createArray("X", nullptr));
    EXPECT_EQ(TempStr.view(), begin);
    // Longer than 16 bits can say.
    char* list = nullptr;
    TempStr.unInitialize();
    EXPECT_EQ(TempStr.initialize(("A=" + std::string(40000, 'x')).c_str()), 0);
    getAdvancedArgumentString(&list);
    EXPECT_EQ(list, nullptr);
}

TEST_F(FileDsnFileTest, AFileIsWrittenInOrderAndWhatIsMissingInItIsTold) {
    replaceText(CurrentDriver, "X");
    replaceText(FileDSNName, files.path("a").c_str());
    const std::string path = files.path("a.dsn");
    const std::string begin = "[ODBC]\nDRIVER={X}\nFILEDSN=" + path + "\n";
    struct Case {
        std::string attributes, lines;
        std::optional<Message::Number> report;
    };
    for (const Case& test : {Case{"UID=t\nUID = u \nA=b=c", "UID=u\n", {}},
                             Case{"UID=t\nLong=" + std::string(995, 'v'), "UID=t\n", Message::kFileIncomplete},
                             Case{"PWD={p;q}\nUID={u}", "PWD={p\nUID={u}\n", Message::kAttributesCut}}) {
        EXPECT_TRUE(createArray("X", test.attributes.c_str()));
        writeDsnToFile(std::string(TempStr.view()).c_str());
        EXPECT_EQ(files.read("a.dsn"), begin + test.lines + "\n");
        const bool isPrivate = test.attributes.starts_with("PWD");
        EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(isPrivate ? 0600 : 0644));
        if (test.report) {
            EXPECT_EQ(answer("OK").substr(0, 30), catalogText(*test.report).substr(0, 30));
        }
        // What was read before it was written does not count.
        EXPECT_NE(installer::readValue("ODBC", "UID", path), "");
        EXPECT_TRUE(deleteFileDSN(path.c_str()));
        EXPECT_FALSE(deleteFileDSN(path.c_str()));
    }
    {
        const FullDisk disk(path.size() + 30);
        writeDsnToFile(("FILEDSN=" + path + ";DRIVER={X};UID=user").c_str());
    }
    expectReport(Message::kFileIncomplete);
    remove(path.c_str());

    // Nothing is written where nothing can be.
    replaceText(FileDSNName, "/proc/none/a");
    writeDsnToFile("UID=u");
    expectReport(Message::kDirectoryNotWritable);
    // Nor where a link leads that has nothing at its end.
    files.write(OdbcFiles::kDrivers, "[X]\nSetup=/x.so\n");
    ASSERT_EQ(symlink("nothing", path.c_str()), 0);
    replaceText(FileDSNName, path.c_str());
    writeDsnToFile("UID=u");
    EXPECT_EQ(dialogText(), catalogText(Message::kOverwriteQuestion));
    EXPECT_FALSE(std::filesystem::exists(files.path("nothing")));
}

TEST_F(FileDsnFileTest, WhatIsAsideComesBackAlsoWhenTheProgramDies) {
    const std::string path = files.write("a.dsn", "old");
    const auto die = [&path] {
        const FileAside aside(path);
        EXPECT_TRUE(aside);
        EXPECT_FALSE(std::filesystem::exists(path));
        return raise(SIGKILL);
    };
    EXPECT_EQ(runInChild(die), -1);
    EXPECT_TRUE(waitUntil([this] { return files.read("a.dsn") == "old"; }));
    EXPECT_EQ(outputOf("ls -A '" + files.path("") + "'"), ".odbc.ini\na.dsn\nodbcinst.ini\n");
}

TEST_F(FileDsnFileTest, AConnectionTestTellsEveryRecordAndKeepsTheLast) {
    files.write(OdbcFiles::kDrivers, "[Talker]\nDriver=" VH_TEST_TALKING_DRIVER "\n");
    struct Case {
        std::string connection;
        const char *console, *last;
        bool unanswered;
    };
    const std::string longText(400, 'x');
    for (const Case& test :
         {Case{"DRIVER={Talker};Text=" + longText, "Test Connect Error:\nNo such\n  server\nTest Connect Error:\n1 ",
               "Text=xxx", false},
          Case{"DRIVER={Talker};Leave=1", "", "", true}, Case{"DRIVER={Talker};Connect=1", "", "", false}}) {
        SCOPED_TRACE(test.connection);
        std::string connection = test.connection;
        TestConnect attempt(ShODBCAdmin, connection.data());
        testing::internal::CaptureStdout();
        EXPECT_EQ(attempt.testConnect(), connection.ends_with("Connect=1") ? 1 : 0);
        const std::string console = testing::internal::GetCapturedStdout();
        EXPECT_EQ(console.find(test.console), 0U) << console;
        EXPECT_EQ(console.empty(), *test.console == '\0');
        const std::string last = attempt.getErrorMsgFromTestConnect();
        EXPECT_NE(last.find(test.last), std::string::npos) << last;
        EXPECT_TRUE(last.size() == 255 || test.connection.size() < 255) << last.size();
        EXPECT_EQ(attempt.isUnanswered(), test.unanswered);
    }
    DSNInfoStruct info{ShODBCAdmin};
    TestConnect nameless(&info);
    EXPECT_EQ(nameless.testConnect(), 0);
    EXPECT_STRNE(nameless.getErrorMsgFromTestConnect(), "");
}

}  // namespace

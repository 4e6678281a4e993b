// The installed program, used as a person uses it, and looked at from outside.
#include "tests/support/x_display.h"

#include <X11/keysym.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <regex>
#include <stdexcept>

#include "tests/support/odbc_files.h"

using namespace std::string_literals;

namespace {

constexpr const char* kTitle = "Varnholt ODBC Administrator";
constexpr unsigned int kTestSeconds = 90;

class ProgramEnvironment : public testing::Environment {
public:
    void SetUp() override {
        stage = std::make_unique<TemporaryFolder>();
        const std::string installed = outputOf("cmake --install '" VH_TEST_BUILD "' --prefix '" + stage->path() + "'");
        if (access(stage->path("bin/odbcadmin").c_str(), X_OK) != 0) {
            throw std::runtime_error(installed);
        }
        server_ = std::make_unique<XServer>();
        person = std::make_unique<XPerson>();
    }
    void TearDown() override {
        person.reset();
        server_.reset();
        stage.reset();
    }
    static inline std::unique_ptr<TemporaryFolder> stage;
    static inline std::unique_ptr<XPerson> person;

private:
    std::unique_ptr<XServer> server_;
};
[[maybe_unused]] const auto* const Registered = testing::AddGlobalTestEnvironment(new ProgramEnvironment);

class ProgramTest : public testing::Test {
protected:
    void SetUp() override {
        alarm(kTestSeconds);
        files.write(OdbcFiles::kDrivers, "[Varnholt SQLite]\nDriver=" + stage("lib/vhsqlite23.so") +
                                             "\nSetup=" + stage("lib/vhsetup23.so") + "\n");
    }
    void TearDown() override { alarm(0); }

    static XPerson& person() { return *ProgramEnvironment::person; }
    static std::string stage(const std::string& name) { return ProgramEnvironment::stage->path(name); }

    // Starts the program and waits for its window, or for the dialog over it.
    void start(const std::string& title = kTitle, bool dialog = false) {
        program = std::make_unique<Program>(std::vector<std::string>{stage("bin/odbcadmin")}, files.path("output"));
        window = waitFor(title, dialog);
    }
    // Waits until the only window, or dialog, with this title has the keyboard and keeps it: the window manager may
    // give it to the window below for a moment.
    static Window waitFor(const std::string& title, bool dialog) {
        constexpr int kLooks = 15;
        std::vector<Window> found;
        int looks = 0;
        EXPECT_TRUE(waitUntil([&] {
            found = person().windows(title, dialog);
            looks = found.size() == 1 && person().hasFocus(found.front()) ? looks + 1 : 0;
            return looks == kLooks;
        })) << title;
        return found.empty() ? None : found.front();
    }
    static void waitUntilGone(const std::string& title, bool dialog) {
        EXPECT_TRUE(waitUntil([&] { return person().windows(title, dialog).empty(); })) << title;
    }
    // Ends the dialog with this title by what is entered.
    static void leave(const std::string& title, Inputs inputs = {XK_Return}) {
        person().enter(inputs);
        waitUntilGone(title, true);
    }
    // Presses the control of the main window that has this letter.
    void press(KeySym letter) {
        window = waitFor(kTitle, false);
        person().key(letter, XK_Alt_L);
    }
    void expectEnd(int status = 0, const std::string& output = "") {
        EXPECT_EQ(program->exitStatus(), status);
        EXPECT_EQ(files.read("output"), output);
    }

    OdbcFiles files;
    ScopedEnvironment environment{{"VH_INSTALLDIR", {}}, {"KVLIB", {}},       {"ODBCINST", {}},    {"LC_ALL", {}},
                                  {"LC_MESSAGES", {}},   {"LANG", "C.UTF-8"}, {"XENVIRONMENT", {}}};
    std::unique_ptr<Program> program;
    Window window = None;
};

TEST_F(ProgramTest, WithoutADisplayItSaysSo) {
    const ScopedEnvironment noDisplay{{"DISPLAY", {}}};
    program = std::make_unique<Program>(std::vector<std::string>{stage("bin/odbcadmin")}, files.path("output"));
    expectEnd(255, "Unable to open display\n");
}

TEST_F(ProgramTest, EveryWayOutEndsItInOrder) {
    const std::pair<std::function<void()>, bool> ways[] = {{[this] { press(XK_c); }, false},
                                                           {[] { person().key(XK_Escape); }, false},
                                                           {[] { person().key(XK_F4, XK_Alt_L); }, false},
                                                           {[this] { press(XK_k); }, true},
                                                           {[] {
                                                                person().enter({{XK_Tab, 4}, XK_Return});
                                                            },
                                                            true}};
    const std::string before = "[ODBC Data Sources]\nabc=Varnholt SQLite\n[abc]\nDatabase=/tmp/x\n";
    const std::string saved = before + "\n[ODBC]\nTRACE=0\nTraceFile=\nTraceDll=\n";
    for (const auto& [leave, saves] : ways) {
        files.write(OdbcFiles::kUser, before);
        start();
        leave();
        expectEnd();
        EXPECT_EQ(files.read(OdbcFiles::kUser), saves ? saved : before);
    }
}

TEST_F(ProgramTest, TraceSettingsThatWereAppliedStayAndTheNextProgramReadsThem) {
    const std::string file = files.path("trace.log");
    const auto expectStored = [&](const char* state) {
        const std::string stored = "ODBC{TRACE="s + state + "|TraceFile=" + file + "|TraceDll=}";
        EXPECT_TRUE(waitUntil([&] { return files.summary() == stored; })) << files.summary();
    };
    start();
    press(XK_t);
    person().enter({XK_space, XK_Tab, file});
    press(XK_p);
    expectStored("1");
    press(XK_e);  // Escape drops the change.
    person().key(XK_Escape);
    expectEnd();
    start();
    press(XK_k);
    expectEnd();
    expectStored("1");

    // OK ends the program even if nothing can be saved any more.
    start();
    unlink(files.path(OdbcFiles::kUser).c_str());
    files.write(OdbcFiles::kUser + "/in the way"s, "");
    press(XK_k);
    expectEnd();
}

TEST_F(ProgramTest, AMissingCatalogIsToldOverAWindowOfNumbers) {
    const ScopedEnvironment nowhere{{"VH_INSTALLDIR", "/nowhere"}};
    start(kTitle, true);
    EXPECT_EQ(person().windows("9002", false).size(), 1U);
    person().key(XK_Return);
    expectEnd();
}

TEST_F(ProgramTest, AnUnreadableListOfDataSourcesEndsItWhateverElseIsReported) {
    files.write(OdbcFiles::kUser, "[ODBC Data Sources]\nno driver=\n");
    for (const char* drivers : {"[Varnholt SQLite]\nDriver=/x.so\n", ""}) {
        files.write(OdbcFiles::kDrivers, drivers);
        start(kTitle, true);
        EXPECT_EQ(person().windows(kTitle, false).size(), 1U);
        EXPECT_TRUE(program->isRunning());
        person().key(XK_Return);
        expectEnd();
    }
}

TEST_F(ProgramTest, ResourcesOfItsNameApplyAndTheDesktopLearnsOfIt) {
    const ScopedEnvironment resources{{"XENVIRONMENT", files.write("resources", "odbcadmin*background: #123456\n")}};
    start();
    EXPECT_TRUE(waitUntil([this] { return person().pixel(window, 3, 3) == 0x123456; }));
    // What a session needs to start it again, and a taskbar to show it.
    const std::string told = outputOf("xprop -name '"s + kTitle + "' WM_COMMAND _NET_WM_NAME _NET_WM_ICON");
    for (const std::string& part : {"{ \"" + stage("bin/odbcadmin") + "\" }", "= \""s + kTitle, "(64 x 64)"s}) {
        EXPECT_NE(told.find(part), std::string::npos) << part << told;
    }
}

TEST_F(ProgramTest, ItExportsTwoFunctionsAndThoseOfXlibThatItReplaces) {
    EXPECT_EQ(outputOf("nm -D --defined-only " + stage("libexec/odbcadmin") +
                       " | cut -d' ' -f3 | grep -vx 'X[A-Za-z]*\\|_XmStrings\\|__bss_start\\|_edata\\|_end' | sort"),
              "exitDriverConfig\ngetFileVersionString\n");
}

TEST_F(ProgramTest, ADataSourceIsAddedConfiguredUsedAndRemoved) {
    const std::string other =
        "[ODBC Data Sources]\nother=Varnholt SQLite\n\n[other]\nDriver=Varnholt SQLite\n"
        "Description=stays\nDatabase=/tmp/other.db\n\n[ODBC]\nTrace=0\n";
    files.write(OdbcFiles::kUser, other);
    const std::string before = files.summary();
    const std::string setupTitle = "Varnholt SQLite Data Source";
    const std::string database = files.path("books.db");
    const auto ask = [](const std::string& query) { return outputOf("echo \"" + query + "\" | isql -b books"); };
    start();

    press(XK_a);
    waitFor("Create a New Data Source", true);
    person().enter({XK_space, XK_Return});
    waitFor(setupTitle, true);
    leave(setupTitle, {"books", XK_Tab, "My books", XK_Tab, database, XK_Return});
    EXPECT_EQ(files.section("ODBC Data Sources"), "other=Varnholt SQLite|books=Varnholt SQLite");
    const std::string added = files.section("books");
    for (const std::string& line : {"Driver=Varnholt SQLite"s, "Description=My books"s, "Database=" + database}) {
        EXPECT_NE(added.find(line), std::string::npos) << line;
    }
    ask("create table book (title text)");
    ask("insert into book values ('Knots')");
    EXPECT_NE(ask("select title from book").find("Knots"), std::string::npos) << ask("select title from book");

    // The new one is the first in the list, where the selection was.
    press(XK_g);
    waitFor(setupTitle, true);
    leave(setupTitle, {XK_Tab, XK_End, " at home", XK_Return});
    const std::string configured = std::regex_replace(added, std::regex("My books"), "My books at home");
    EXPECT_EQ(files.section("books"), configured);
    press(XK_r);
    waitFor(kTitle, true);
    person().key(XK_y, XK_Alt_L);
    waitUntilGone(kTitle, true);
    EXPECT_EQ(files.summary(), before);
    EXPECT_EQ(ask("select title from book").find("Knots"), std::string::npos);
    press(XK_c);
    expectEnd();
}

TEST_F(ProgramTest, FileDataSourcesAreMadeInBothWaysAndConnect) {
    const std::string wizardTitle = "Create a New Data Source";
    const std::string setupTitle = "Varnholt SQLite Data Source";
    const std::string database = files.path("books.db");
    outputOf("sqlite3 '" + database + "' \"create table book (title text); insert into book values ('Knots')\"");
    const auto expectBooks = [&](const std::string& name) {
        const std::string answer =
            outputOf("echo 'select title from book' | isql -v -b -k 'FILEDSN=" + files.path(name) + "'");
        EXPECT_NE(answer.find("Knots"), std::string::npos) << name << ": " << answer << files.read(name);
    };
    const auto goThroughWizard = [&](const std::string& name, bool verified) {
        press(XK_a);
        waitFor(wizardTitle, true);
        person().key(XK_space);
        person().key(XK_a, XK_Alt_L);
        waitFor("Advanced File DSN Settings", true);
        person().enter({XK_Return, "Database=" + database, XK_Tab, {XK_space, verified ? 0 : 1}});
        leave("Advanced File DSN Settings", {XK_Tab, XK_space});
        waitFor(wizardTitle, true);
        // On the second and the third screen the keyboard is where the person needs it.
        person().enter({XK_Return, name, XK_Return, XK_Return});
    };
    start();
    press(XK_f);
    goThroughWizard("one", false);
    waitUntilGone(wizardTitle, true);
    expectBooks("one.dsn");

    goThroughWizard(files.path("two.dsn"), true);
    waitFor("Test Connection", true);
    EXPECT_EQ(files.read("two.dsn"), "(missing)");
    person().key(XK_Return);
    waitFor(setupTitle, true);
    person().enter({"Books", XK_Tab});
    person().key(XK_a, XK_Control_L);
    leave(setupTitle, {database, XK_Return});
    expectBooks("two.dsn");
    EXPECT_EQ(files.read("two.dsn").find("FILEDSN"), std::string::npos);
    press(XK_c);
    expectEnd();
}

TEST_F(ProgramTest, AForeignDriverManagerOnTheSearchPathDoesNotEndIt) {
    // It comes before the product's own, and can't say its version.
    files.write("lib/libodbc.so", outputOf("cat '" VH_TEST_LIBRARY "'"));
    const ScopedEnvironment search{{"KV", files.path("lib")}};
    start();
    person().key(XK_Escape);
    expectEnd();
}

TEST_F(ProgramTest, DriversOfDebianGetADialogAndTheOneThatNamesNoneIsRegistered) {
    const std::string command = stage("bin/odbcadmin-register");
    const std::string before =
        "[SQLite3]\nDriver=libsqlite3odbc.so\nSetup=libsqlite3odbc.so\n\n[PostgreSQL Unicode]\n"
        "Driver=psqlodbcw.so\nSetup=libodbcpsqlS.so\n\n[MDBTools]\nDriver=libmdbodbc.so\n"
        "Setup=libmdbodbc.so\n\n[FreeTDS]\nDriver=libtdsodbc.so\nSetup=libtdsS.so\n\n# by hand\n[MariaDB]\nDriver=x\n";
    files.write(OdbcFiles::kDrivers, before);
    EXPECT_NE(outputOf(command + " --user").find(files.path(OdbcFiles::kDrivers)), std::string::npos);
    EXPECT_EQ(outputOf(command + " none 2>&1 >/dev/null; echo -n $?").substr(0, 4), "none");
    EXPECT_EQ(files.read(OdbcFiles::kDrivers), before);
    const std::string said = outputOf(command);
    EXPECT_TRUE(said.starts_with("MariaDB ") && said.find("SQLite3") == std::string::npos) << said;
    EXPECT_EQ(files.read(OdbcFiles::kDrivers), before + "Setup=" + stage("lib/vhsetup23.so") + "\n");
    outputOf(command + " 'Varnholt SQLite' 'Varnholt PostgreSQL'; " + command + " --remove");
    EXPECT_EQ(files.read(OdbcFiles::kDrivers), before);
    // ODBC finds no driver in such a file, so nobody could take one out.
    files.write(OdbcFiles::kDrivers, "x=y\n" + before);
    const std::string refused = outputOf(command + " --remove; echo $?");
    EXPECT_TRUE(refused.find("its line 1.") != std::string::npos && refused.ends_with("\n1\n")) << refused;
    files.write(OdbcFiles::kDrivers, before);
    start();
    press(XK_a);
    waitFor("Create a New Data Source", true);
    person().enter({XK_space, {XK_Down, 4}, XK_Return});
    leave("SQLite3 Data Source", {XK_Escape});

    // The product's own drivers, by their names alone.
    files.write(OdbcFiles::kDrivers, "");
    outputOf(command + " 'Varnholt SQLite' 'Varnholt PostgreSQL' 'Varnholt FreeTDS'");
    EXPECT_EQ(outputOf("odbcinst -q -d"), "[Varnholt SQLite]\n[Varnholt PostgreSQL]\n[Varnholt FreeTDS]\n");
    const std::string answer = outputOf("isql -v -b -k 'DRIVER=Varnholt FreeTDS;Server=127.0.0.1;Port=1' </dev/null");
    EXPECT_NE(answer.find("[FreeTDS]"), std::string::npos) << answer;
}

TEST_F(ProgramTest, DoctorConnectsAndTellsPeopleAndScripts) {
    files.write(OdbcFiles::kUser,
                "[ODBC Data Sources]\nGood=Varnholt SQLite\nBad=Varnholt SQLite\n[Good]\n"
                "Driver=Varnholt SQLite\nDatabase=" +
                    files.path("g.db") +
                    "\nTimeot=1\n[Bad]\n"
                    "Driver=Varnholt SQLite\nDatabase=/none/\"\x01\n");
    const auto doctor = [](const std::string& arguments) {
        return outputOf("'" + stage("bin/odbcadmin-doctor") + "' " + arguments + "; echo exit=$?");
    };
    const auto expectIn = [](const std::string& text, const std::vector<std::string>& parts) {
        for (const std::string& part : parts) {
            EXPECT_NE(text.find(part), std::string::npos) << part << " in " << text;
        }
    };
    expectIn(doctor("Good"), {"\nGood connects, in 0.", "SQLite", "\nWarning " + files.path(OdbcFiles::kUser) + ":7\n",
                              "  => If you mean Timeout, write that.\n", "exit=1"});
    expectIn(doctor("Bad"),
             {"\nBad does not connect", "/none/\"\uFFFD can't be read", "Errors: 1, warnings: 0", "exit=2"});
    expectIn(doctor("Sad"), {"There is no data source Sad", "exit=2"});
    expectIn(doctor("--timeout x Good"), {"Usage: ", "exit=3"});
    expectIn(doctor("--json Bad | jq -c '[.connection.connected, .findings[0].code, .findings[0].line, .errors, "
                    ".files[0].variables]'"),
             {"[false,\"database-file\",10,1,\"ODBCINI\"]"});
}

}  // namespace

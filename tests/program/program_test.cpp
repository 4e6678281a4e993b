// The installed program, used as a person uses it, and looked at from outside.
#include "tests/support/x_display.h"

#include <X11/keysym.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "tests/support/odbc_files.h"

using namespace std::string_literals;

namespace {

constexpr const char* kTitle = "Varnholt ODBC Administrator";
constexpr unsigned long kErrorRed = 0xc0392b;
constexpr unsigned long kInformationBlue = 0x2f6db5;
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
        if (dialog) {
            // The window manager gives the keyboard to the main window for a moment, which comes up last.
            usleep(200'000);
            window = waitFor(title, dialog);
        }
    }
    // Waits until the only window, or dialog, with this title has the keyboard.
    static Window waitFor(const std::string& title, bool dialog) {
        std::vector<Window> found;
        EXPECT_TRUE(waitUntil([&] {
            found = person().windows(title, dialog);
            return found.size() == 1 && person().hasFocus(found.front());
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
    // Where the row of buttons at the bottom of a window begins.
    using Parts = std::vector<Place>;
    static Parts::const_iterator bottomRow(const Parts& parts) {
        return std::find_if(parts.begin(), parts.end(), [&](const Place& part) { return part.y == parts.back().y; });
    }
    // The buttons of the main window stand in a row at its bottom; those of the page in front in a column that ends
    // where the text above that row ends.
    enum Button { kOk, kCancel, kApply, kAdd = 10, kRemove, kConfigure };
    void press(Button button) {
        Parts row;
        Parts column;
        window = waitFor(kTitle, false);
        EXPECT_TRUE(waitUntil([&] {
            const Parts parts = person().parts(window);
            const auto rowBegin = bottomRow(parts);
            if (rowBegin - parts.begin() < 2) {
                return false;
            }
            row.assign(rowBegin, parts.end());
            column.clear();
            std::copy_if(parts.begin(), rowBegin - 1, std::back_inserter(column),
                         [edge = rowBegin[-1].x + rowBegin[-1].width](const Place& part) {
                             return part.x + part.width == edge;
                         });
            return button < kAdd || column.size() == columnButtons;
        }));
        ASSERT_TRUE(row.size() > 1 && (button < kAdd || column.size() == columnButtons));
        person().click(button < kAdd ? row[button] : column[static_cast<std::size_t>(button - kAdd)]);
    }
    // Brings the page with this number, from 0, to the front by its tab; the tabs are the uppermost parts of the
    // window.
    void openPage(std::size_t page) {
        std::vector<Place> tabs = person().parts(window);
        std::erase_if(tabs, [top = tabs.front().y](const Place& part) { return part.y > top + 4; });
        std::sort(tabs.begin(), tabs.end(), [](const Place& a, const Place& b) { return a.x < b.x; });
        ASSERT_GT(tabs.size(), page);
        person().click(tabs[page]);
        columnButtons = page == 1 ? 4 : 3;
    }
    // Whether a color is to be seen near the upper left corner, where boxes have their icon.
    static bool shows(Window box, unsigned long color) {
        for (int at = 0; at < 100 * 100; at += 3) {
            if (person().pixel(box, at % 100, at / 100) == color) {
                return true;
            }
        }
        return false;
    }
    void expectEnd(int status) { EXPECT_EQ(program->exitStatus(), status); }

    OdbcFiles files;
    ScopedEnvironment environment{{"VH_INSTALLDIR", {}}, {"KVLIB", {}},       {"ODBCINST", {}},    {"LC_ALL", {}},
                                  {"LC_MESSAGES", {}},   {"LANG", "C.UTF-8"}, {"XENVIRONMENT", {}}};
    std::unique_ptr<Program> program;
    Window window = None;
    std::size_t columnButtons = 3;  // Those beside the list of the page in front.
};

TEST_F(ProgramTest, WithoutADisplayItSaysSo) {
    const ScopedEnvironment noDisplay{{"DISPLAY", {}}};
    program = std::make_unique<Program>(std::vector<std::string>{stage("bin/odbcadmin")}, files.path("output"));
    expectEnd(255);
    EXPECT_EQ(files.read("output"), "Unable to open display\n");
}

TEST_F(ProgramTest, EveryWayOutEndsItInOrder) {
    const auto returnInAList = [this] {
        const Parts parts = person().parts(window);
        person().click(*std::max_element(parts.begin(), parts.end(), [](const Place& a, const Place& b) {
            return a.width * a.height < b.width * b.height;
        }));
        person().key(XK_Return);
    };
    struct Way {
        std::function<void()> leave;
        bool saves;
    };
    const Way ways[] = {{[this] { press(kCancel); }, false},
                        {[] { person().key(XK_Escape); }, false},
                        {[] { person().key(XK_F4, XK_Alt_L); }, false},
                        {[this] { press(kOk); }, true},
                        {[] { person().key(XK_Return); }, true},
                        {returnInAList, true}};
    const std::string before = "[ODBC Data Sources]\nabc=Varnholt SQLite\n[abc]\nDatabase=/tmp/x\n";
    const std::string saved =
        "[ODBC Data Sources]\nabc=Varnholt SQLite\n\n[abc]\nDatabase=/tmp/x\n\n[ODBC]\nTRACE=0\nTraceFile=\n"
        "TraceDll=\n\n";
    for (const Way& way : ways) {
        files.write(OdbcFiles::kUser, before);
        start();
        way.leave();
        expectEnd(0);
        EXPECT_EQ(files.read("output"), "");
        EXPECT_EQ(files.read(OdbcFiles::kUser), way.saves ? saved : before);
    }
}

TEST_F(ProgramTest, TraceSettingsThatWereAppliedStayAndTheNextProgramReadsThem) {
    const std::string file = files.path("trace.log");
    const auto isStored = [&](const char* state) {
        const OdbcFiles::Sections stored{{"ODBC", {"TRACE="s + state, "TraceFile=" + file, "TraceDll="}}};
        return waitUntil([&] { return files.userSections() == stored; });
    };
    start();
    const std::size_t partsAtFirst = person().parts(window).size();
    // From OK to the tabs, along them to the fourth, and to the first control below them.
    person().enter({XK_Tab, XK_Tab, XK_Tab, XK_Right, XK_Right, XK_Right, XK_space});
    EXPECT_TRUE(waitUntil([&] { return person().parts(window).size() != partsAtFirst; }));
    const Parts parts = person().parts(window);
    const Place toggle = *std::find_if(parts.begin(), parts.end(), [&parts](const Place& part) {
        return part.y > parts.front().y + parts.front().height;
    });
    person().click(toggle);
    person().enter({XK_Tab, file});
    press(kApply);
    EXPECT_TRUE(isStored("1")) << files.read(OdbcFiles::kUser);
    person().click(toggle);
    press(kApply);
    EXPECT_TRUE(isStored("0")) << files.read(OdbcFiles::kUser);
    person().click(toggle);
    press(kCancel);
    expectEnd(0);
    EXPECT_TRUE(isStored("0")) << files.read(OdbcFiles::kUser);

    start();
    press(kOk);
    expectEnd(0);
    EXPECT_TRUE(isStored("0")) << files.read(OdbcFiles::kUser);

    // OK ends the program even if nothing can be saved any more.
    start();
    unlink(files.path(OdbcFiles::kUser).c_str());
    files.write(OdbcFiles::kUser + "/in the way"s, "");
    press(kOk);
    expectEnd(0);
    EXPECT_EQ(files.read("output"), "");
}

TEST_F(ProgramTest, AMissingCatalogIsToldOverAWindowOfNumbers) {
    const ScopedEnvironment nowhere{{"VH_INSTALLDIR", "/nowhere"}};
    start(kTitle, true);
    EXPECT_EQ(person().windows("9002", false).size(), 1U);
    person().key(XK_Return);
    expectEnd(0);
}

TEST_F(ProgramTest, AnUnreadableListOfDataSourcesEndsIt) {
    files.write(OdbcFiles::kUser, "[ODBC Data Sources]\nno driver=\n");
    start(kTitle, true);
    EXPECT_EQ(person().windows(kTitle, false).size(), 1U);
    EXPECT_TRUE(program->isRunning());
    person().key(XK_Return);
    expectEnd(0);
}

TEST_F(ProgramTest, OfSeveralErrorsAtTheStartTheLastIsSeen) {
    files.write(OdbcFiles::kUser, "[ODBC Data Sources]\nno driver=\n");
    files.write(OdbcFiles::kDrivers, "");
    start(kTitle, true);
    // That the drivers can not be read does not end the program.
    leave(kTitle);
    waitFor(kTitle, false);
    person().key(XK_Escape);
    expectEnd(0);
}

TEST_F(ProgramTest, ResourcesOfItsNameApply) {
    const ScopedEnvironment resources{{"XENVIRONMENT", files.write("resources", "odbcadmin*background: #123456\n")}};
    start();
    EXPECT_TRUE(waitUntil([this] { return person().pixel(window, 3, 3) == 0x123456; }));
}

TEST_F(ProgramTest, ItExportsTwoFunctions) {
    EXPECT_EQ(outputOf("nm -D --defined-only " + stage("libexec/odbcadmin") +
                       " | cut -d' ' -f3 | grep -vx '_XmStrings\\|__bss_start\\|_edata\\|_end' | sort"),
              "exitDriverConfig\ngetFileVersionString\n");
}

TEST_F(ProgramTest, ADataSourceIsAddedConfiguredUsedAndRemoved) {
    const std::string other =
        "[ODBC Data Sources]\nother=Varnholt SQLite\n\n[other]\nDriver=Varnholt SQLite\n"
        "Description=stays\nDatabase=/tmp/other.db\n\n[ODBC]\nTrace=0\n";
    files.write(OdbcFiles::kUser, other);
    const OdbcFiles::Sections before = files.userSections();
    const std::string setupTitle = "Varnholt SQLite Data Source";
    const std::string database = files.path("books.db");
    const auto ask = [](const std::string& query) { return outputOf("echo \"" + query + "\" | isql -b books"); };
    start();

    press(kAdd);
    waitFor("Create a New Data Source", true);
    person().enter({XK_space, XK_Return});
    waitFor(setupTitle, true);
    leave(setupTitle, {"books", XK_Tab, "My books", XK_Tab, database, XK_Return});
    const OdbcFiles::Sections added = files.userSections();
    OdbcFiles::Sections expected = before;
    expected.front().second.push_back("books=Varnholt SQLite");
    expected.push_back({"books", added.back().second});
    EXPECT_EQ(added, expected);
    const auto stored = [&](const std::string& line) {
        return std::count(expected.back().second.begin(), expected.back().second.end(), line) == 1;
    };
    EXPECT_TRUE(stored("Driver=Varnholt SQLite") && stored("Description=My books") && stored("Database=" + database));
    ask("create table book (title text)");
    ask("insert into book values ('Knots')");
    EXPECT_NE(ask("select title from book").find("Knots"), std::string::npos) << ask("select title from book");

    // The new one is the first in the list, where the selection was.
    press(kConfigure);
    waitFor(setupTitle, true);
    leave(setupTitle, {XK_Tab, XK_End, " at home", XK_Return});
    std::replace(expected.back().second.begin(), expected.back().second.end(), "Description=My books"s,
                 "Description=My books at home"s);
    EXPECT_EQ(files.userSections(), expected);

    press(kConfigure);
    waitFor(setupTitle, true);
    leave(setupTitle, {XK_Escape});
    EXPECT_EQ(files.userSections(), expected);

    press(kRemove);
    waitFor(kTitle, true);
    leave(kTitle);
    EXPECT_EQ(files.userSections(), before);
    EXPECT_EQ(ask("select title from book").find("Knots"), std::string::npos);
    press(kOk);
    expectEnd(0);
}

TEST_F(ProgramTest, FileDataSourcesAreMadeInEveryWayAndConnect) {
    const std::string wizardTitle = "Create a New Data Source";
    const std::string setupTitle = "Varnholt SQLite Data Source";
    const std::string database = files.path("books.db");
    outputOf("sqlite3 '" + database + "' \"create table book (title text); insert into book values ('Knots')\"");
    const auto expectBooks = [&](const std::string& name) {
        const std::string answer =
            outputOf("echo 'select title from book' | isql -v -b -k 'FILEDSN=" + files.path(name) + "'");
        EXPECT_NE(answer.find("Knots"), std::string::npos) << name << ": " << answer << files.read(name);
    };
    enum class Attributes { kNone, kVerified, kNotVerified };
    const auto goThroughWizard = [&](const std::string& name, Attributes attributes) {
        press(kAdd);
        const Window wizard = waitFor(wizardTitle, true);
        person().key(XK_space);
        if (attributes != Attributes::kNone) {
            const Parts parts = person().parts(wizard);
            person().click(bottomRow(parts)[-1]);
            waitFor("Advanced File DSN Settings", true);
            person().enter({XK_Return, "Database=" + database, XK_Tab});
            person().enter({{XK_space, attributes == Attributes::kNotVerified ? 1 : 0}});
            leave("Advanced File DSN Settings", {XK_Tab, XK_space});
            waitFor(wizardTitle, true);
        }
        // On the second and the third screen the keyboard is where the person needs it.
        person().enter({XK_Return, name, XK_Return, XK_Return});
    };
    const auto setUp = [&] {
        waitFor(setupTitle, true);
        person().enter({"Books", XK_Tab});
        person().key(XK_a, XK_Control_L);
        leave(setupTitle, {database, XK_Return});
    };
    start();
    openPage(1);
    goThroughWizard("one", Attributes::kNone);
    setUp();
    expectBooks("one.dsn");

    goThroughWizard(files.path("two.dsn"), Attributes::kVerified);
    waitFor("Test Connection", true);
    EXPECT_EQ(files.read("two.dsn"), "(missing)");
    person().key(XK_Return);
    setUp();
    expectBooks("two.dsn");
    EXPECT_EQ(files.read("two.dsn").find("FILEDSN"), std::string::npos);

    goThroughWizard("three", Attributes::kNotVerified);
    waitUntilGone(wizardTitle, true);
    expectBooks("three.dsn");

    files.write("one.dsn", "[ODBC]\nDriver=Nobody\n");
    goThroughWizard("one", Attributes::kNotVerified);
    waitFor(kTitle, true);
    person().key(XK_Return);
    setUp();
    expectBooks("one.dsn");
    EXPECT_EQ(files.read("one.dsn").find("Nobody"), std::string::npos);
    press(kCancel);
    expectEnd(0);
}

TEST_F(ProgramTest, AForeignDriverManagerOnTheSearchPathDoesNotEndIt) {
    // Built from source it lands in such a place, and it can't say its version.
    files.write("lib/libodbc.so", outputOf("cat '" VH_TEST_LIBRARY "'"));
    const ScopedEnvironment search{{"LD_LIBRARY_PATH", files.path("lib")}};
    start();
    press(kCancel);
    expectEnd(0);
    EXPECT_EQ(files.read("output"), "");
}

// A PostgreSQL server of the test's own on the loopback interface.
class PostgresServer {
public:
    explicit PostgresServer(const TemporaryFolder& folder) : data_(folder.path("data")) {
        outputOf("chmod 755 " + folder.path() + " && install -d -o postgres " + data_);
        const std::string made = run("initdb -A trust -D " + data_);
        const std::string options = "-p " + std::to_string(port_) + " -c listen_addresses=127.0.0.1 -k " + data_;
        const std::string started = run("pg_ctl start -w -l " + data_ + "/log -D " + data_ + " -o \"" + options + "\"");
        EXPECT_NE(started.find("server started"), std::string::npos) << made << started;
    }
    ~PostgresServer() { run("pg_ctl stop -m immediate -D " + data_); }
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;
    std::string port() const { return std::to_string(port_); }

private:
    // The server refuses to run as root.
    static std::string run(const std::string& command) {
        return outputOf("cd / && runuser -u postgres -- $(ls -d /usr/lib/postgresql/*/bin | tail -n 1)/" + command);
    }
    std::string data_;
    int port_ = 20000 + getpid() % 10000;
};

TEST_F(ProgramTest, DriversOfStockLinuxAreRegisteredAndConnect) {
    files.write(OdbcFiles::kDrivers, "");
    for (const char* driver : {"sqlite", "postgresql", "freetds"}) {
        outputOf("odbcinst -i -d -f '" + stage("share/drivers/") + driver + ".ini'");
    }
    EXPECT_EQ(outputOf("odbcinst -q -d"), "[Varnholt SQLite]\n[Varnholt PostgreSQL]\n[Varnholt FreeTDS]\n");
    const std::string query = files.write("query", "select 6*7;\n");
    EXPECT_NE(
        outputOf("isql -v -b -k 'DRIVER=Varnholt FreeTDS;Server=127.0.0.1;Port=1' <'" + query + "'").find("[FreeTDS]"),
        std::string::npos);
    start();
    if (geteuid() != 0) {
        GTEST_SKIP() << "Only root can start a database server as another user.";
    }
    const TemporaryFolder folder;
    const PostgresServer server(folder);
    press(kAdd);
    waitFor("Create a New Data Source", true);
    person().enter({XK_space, XK_Down, XK_Return});
    const std::string setupTitle = "Varnholt PostgreSQL Data Source";
    const Window form = waitFor(setupTitle, true);
    ASSERT_NE(form, None);
    const auto bottomButton = [form](std::ptrdiff_t number) {
        const Parts parts = person().parts(form);
        return bottomRow(parts)[number];
    };
    // The driver proposes this machine and another port.
    person().enter({"pg", {XK_Tab, 3}, "1", XK_Tab, "postgres", XK_Tab, "postgres"});
    person().click(bottomButton(0));
    const Window failed = waitFor("Connection Test", true);
    EXPECT_TRUE(waitUntil([&] { return shows(failed, kErrorRed); }));
    leave("Connection Test", {XK_Escape});

    waitFor(setupTitle, true);
    std::vector<Place> fields = person().parts(form);
    std::erase_if(fields, [x = fields[1].x](const Place& part) { return part.x < x || part.x > x + 4; });
    person().click(fields[3]);
    person().enter({XK_Home, {XK_Delete, 5}, server.port()});
    person().click(bottomButton(0));
    const Window succeeded = waitFor("Connection Test", true);
    EXPECT_TRUE(waitUntil([&] { return shows(succeeded, kInformationBlue); }));
    leave("Connection Test");
    waitFor(setupTitle, true);
    EXPECT_EQ(files.userSections(), OdbcFiles::Sections{}) << "a test stores nothing";

    person().click(bottomButton(2));
    waitUntilGone(setupTitle, true);
    EXPECT_NE(outputOf("isql -b -d, pg <'" + query + "'").find("42"), std::string::npos);
    press(kCancel);
    expectEnd(0);
    EXPECT_EQ(files.read("output"), "");
}

}  // namespace

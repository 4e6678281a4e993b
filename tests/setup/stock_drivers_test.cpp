// The drivers as Debian's packages register them, with servers of the test's own: what a person does with each.
#include "tests/setup/setup_dialog_test.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>
#include <regex>
#include <thread>

using namespace std::string_literals;

namespace {

// A socket that listens on a port of the loopback interface, accepts whoever comes, keeps the first that each of them
// sends, and answers nothing.
class Listener {
public:
    Listener() {
        sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
        socklen_t size = sizeof address;
        bind(socket_, reinterpret_cast<sockaddr*>(&address), size);
        getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
        port_ = std::to_string(ntohs(address.sin_port));
        listen(socket_, 5);
        thread_ = std::jthread([this] {
            for (int guest = -1; (guest = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0; close(guest)) {
                char part[1024];
                received_.append(part, static_cast<std::size_t>(std::max<ssize_t>(0, read(guest, part, sizeof part))));
            }
        });
    }
    ~Listener() {
        end();
        close(socket_);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    const std::string& port() const { return port_; }
    // What came until now, which is the end.
    std::string end() {
        shutdown(socket_, SHUT_RDWR);
        if (thread_.joinable()) {
            thread_.join();
        }
        return received_;
    }

private:
    int socket_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::string port_, received_;
    std::jthread thread_;
};

// A database server, made by one command and run by another in a folder of its own, as a user without rights.
class Server {
public:
    // The commands find `given` in the file ../given.
    Server(const std::string& given, const std::string& make, const std::string& run) : port_(Listener().port()) {
        folder_.write("given", given);
        outputOf("chmod 755 " + folder_.path() + "; install -d" + (geteuid() == 0 ? " -o nobody " : " ") + data());
        made_ = outputOf("cd " + data() + " && " + kUser + make + " " + data());
        server_ = std::make_unique<Program>(
            std::vector<std::string>{"sh", "-c", "cd " + data() + " && exec " + kUser + run + port_}, "/dev/null",
            SIGQUIT);
        EXPECT_TRUE(waitUntil([this] {
            return outputOf("bash -c 'exec 3<>/dev/tcp/127.0.0.1/" + port_ + "'").empty();
        })) << made_;
    }
    const std::string& port() const { return port_; }

private:
    std::string data() const { return folder_.path("data"); }
    // The servers refuse to run as root, and a change of the user forgets what is to happen when the test dies.
    const std::string kUser =
        geteuid() == 0 ? "setpriv --reuid nobody --regid nogroup --clear-groups --pdeathsig KILL -- " : "";
    TemporaryFolder folder_;
    std::string port_, made_;
    std::unique_ptr<Program> server_;
};

struct Driver {
    const char* name;
    std::vector<std::pair<std::string, std::string>> typed{};
    std::string test{};
    std::string query{};
    std::string answer{};
};

class StockDriversTest : public SetupDialogTest {};

TEST_F(StockDriversTest, EachIsListedAddedTriedConfiguredAndUsed) {
    alarm(180);
    const std::string stage = files.path("stage");
    outputOf("cmake --install '" VH_TEST_INSTALL_DIR "' --prefix " + stage);
    const std::string modules = outputOf("dirname $(dpkg -L odbc-postgresql | grep -m 1 psqlodbcw.so)");
    const ScopedEnvironment search{
        {"KVLIB", stage + "/lib:" + stage + "/lib/setup:" + modules.substr(0, modules.find('\n'))}};
    // As the packages register them; only this one's name is in a script.
    files.write("mdb.ini", "[MDBTools]\nDriver=libmdbodbc.so\nSetup=libmdbodbc.so\n");
    files.write(OdbcFiles::kDrivers, "");
    outputOf(
        "cd /usr/share; for file in tdsodbc/odbcinst.ini odbc-mariadb/odbcinst.ini.template "
        "psqlodbc/odbcinst.ini.template sqliteodbc/unixodbc.ini " +
        files.path("mdb.ini") + "; do odbcinst -i -d -f $file; done; " + stage +
        "/bin/odbcadmin-register 'MariaDB Unicode' 'Varnholt PostgreSQL'");

    const std::string postgresql = "$(ls -d /usr/lib/postgresql/*/bin | tail -n 1)/";
    const Server postgres("a%+b\n", postgresql + "initdb -A scram-sha-256 -U ada --pwfile=../given -D",
                          postgresql + "postgres -c listen_addresses=127.0.0.1 -k . -D . -p ");
    const Server mariadb("CREATE USER ada@localhost IDENTIFIED BY 'p%+;x';\n",
                         "mariadb-install-db --no-defaults --auth-root-authentication-method=normal --datadir",
                         "mariadbd --no-defaults --bind-address=127.0.0.1 --socket=sql --datadir=. "
                         "--init-file=$PWD/../given --port=");
    Listener tds;

    const Driver ofPostgresql{"PostgreSQL ANSI",
                              {{"TxtServername", "127.0.0.1"},
                               {"TxtPort", postgres.port()},
                               {"TxtDatabase", "postgres"},
                               {"TxtUsername", "ada"},
                               {"TxtPassword", "a%+b"},
                               {"TglSavePassword", " "}},
                              "settings work. Server: PostgreSQL 1",
                              "select 6*7",
                              "42"};
    std::vector<Driver> drivers{
        {"FreeTDS",
         {{"TxtServer", "127.0.0.1"},
          {"TxtPort", tds.port()},
          {"TxtUID", "ada"},
          {"TxtPWD", "geheim"},
          {"OptTDS_Version", "7.4"}},
         "could not be made"},
        {"MariaDB Unicode",
         {{"TxtServer", "127.0.0.1"},
          {"TxtPort", mariadb.port()},
          {"TxtUser", "ada"},
          {"TxtPassword", "p%+;x"},
          {"TglSavePassword", " "}},
         "settings work. Server: MariaDB 10",
         "select 6*7",
         "42"},
        {"MDBTools",
         {{"TxtDatabase", VH_TEST_ACCESS_DATABASE}},
         "settings work.",
         "select Name from MSysObjects",
         "Monitor_Authenticate"},
        ofPostgresql,
        ofPostgresql,
        {"SQLite", {{"TxtDatabase", files.path("2.db")}}, "libsqliteodbc.so"},
        {"SQLite3", {{"TxtDatabase", files.path("3.db")}}, "settings work. Server: SQLite 3", "select 6*7", "42"},
        ofPostgresql};
    drivers[4].name = "PostgreSQL Unicode";
    drivers[7].name = "Varnholt PostgreSQL";
    open();
    std::vector<std::string> names;
    for (const Driver& driver : drivers) {
        names.push_back(driver.name);
    }
    EXPECT_EQ(rows(LstName), names);
    std::size_t row = 0;
    for (const std::string& version : rows(LstVersion)) {
        EXPECT_EQ(std::regex_search(version, std::regex("^[0-9.]+$")), names[row++] != "SQLite") << row << version;
    }
    for (std::size_t i = 0; i < drivers.size(); ++i) {
        const Driver& driver = drivers[i];
        SCOPED_TRACE(driver.name);
        click(BtnAdd);
        clickRow(LstDPName, static_cast<int>(i) + 1);
        inDialog(
            [&] {
                enter({driver.name});
                for (const auto& [field, text] : driver.typed) {
                    moveTo(field);
                    enter({text});
                }
                press("BtnTest");
                expectMessage(driver.test);
                enter({XK_Escape});
                press("BtnOK");
            },
            BtnFinish);
        const std::string added = files.section(driver.name);
        clickRow(LstUName, static_cast<int>(i) + 1);
        inDialog([] { enter({XK_Tab, "new", XK_Return}); });
        EXPECT_EQ(files.section(driver.name), added + "|Description=new");
        const std::string answer =
            outputOf("echo '" + driver.query + "' | timeout 20 isql -b -v '"s + driver.name + "'");
        EXPECT_NE(answer.find(driver.answer), std::string::npos) << answer;
    }
    // A protocol that begins with the question whether to encrypt (prelogin), and nothing of the password.
    const std::string sent = tds.end();
    EXPECT_EQ(sent.find("geheim"), std::string::npos);
    EXPECT_EQ(sent.substr(0, 1), "\x12") << ::testing::PrintToString(sent);
}

}  // namespace

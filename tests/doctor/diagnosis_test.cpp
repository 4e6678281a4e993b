#include "doctor/diagnosis.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>
#include <tuple>

#include "doctor/library_keys.h"
#include "doctor/server_look.h"
#include "tests/support/temporary_folder.h"

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

constexpr const char* kDrivers = "[Good]\nDriver=/good.so\n";
constexpr const char* kSound = "[ODBC Data Sources]\nA=Good\n[A]\nDriver=Good\n";

// A sound account, but for what is given. A file whose text is "/" is a directory.
doctor::Account accountOf(const Pairs& files, const Pairs& variables = {}) {
    doctor::Account account;
    account.userName = "me";
    account.home = "/h";
    account.user = 7;
    account.variables = {{"HOME", "/h"}};
    account.libraries["/good.so"] = {doctor::LibraryKind::kLibrary, "/good.so"};
    account.libraries["/good.so"].functions = {"SQLConnect"};
    account.libraries["/good.so"].foreignKeys = {"databse", "server", "own"};
    account.libraries["/good.so"].knownKeys = {"Database"};
    account.otherFiles["/home/you/.odbc.ini"] = "[Yours]\nDriver=Good\n";
    Pairs all{{"/etc/odbcinst.ini", kDrivers}, {"/h/.odbc.ini", kSound}};
    all.insert(all.end(), files.begin(), files.end());
    for (const auto& [path, text] : all) {
        account.files[path] = {path, text == "gone" ? ENOENT : 0, text != "/", 7, 0600, text == "/" ? "" : text};
    }
    for (const auto& [name, value] : variables) {
        account.variables[name] = value;
    }
    return account;
}

std::string told(const doctor::Findings& findings) {
    std::string text;
    for (const doctor::Finding& finding : findings) {
        text += (text.empty() ? "" : " ") + std::string(finding.kind.name) + "@" + finding.file + ":" +
                std::to_string(finding.line);
    }
    return text;
}

// A list of one data source, and its section.
std::string listed(const std::string& section) {
    return "[ODBC Data Sources]\nA=Good\n" + section;
}

TEST(DoctorTest, TellsWhatIsWrongAndWhere) {
    struct Case {
        Pairs files;
        std::string told;
        Pairs variables{};
        std::string name{};
    };
    const std::string user = "/h/.odbc.ini";
    const auto wide = std::string("\xFF\xFE[\0A\0", 6);
    for (const Case& row : std::vector<Case>{
             {{}, ""},
             {{}, "", {}, "a"},
             // Drivers that are not known to a program with files of its own, and variables that lead astray.
             {{{"/s/odbc.ini", kSound}}, "odbcsysini-is-file@/s/odbc.ini:0", {{"ODBCSYSINI", "/s/odbc.ini"}}},
             {{{"/s", "/"}, {user, "gone"}},
              "driver-file-missing@/s/odbcinst.ini:0 no-data-sources@/h/.odbc.ini:0",
              {{"ODBCSYSINI", "/s"}}},
             {{}, "odbcsysini-missing@/none:0", {{"ODBCSYSINI", "/none"}}},
             {{}, "odbcsysini-empty@:0", {{"ODBCSYSINI", ""}}},
             {{}, "odbcinstini-is-path@/etc//etc/odbcinst.ini:0", {{"ODBCINSTINI", "/etc/odbcinst.ini"}}},
             {{}, "odbcini-missing@/no.ini:0", {{"ODBCINI", "/no.ini"}}},
             {{}, "", {{"ODBCINI", ""}}},
             {{{"/h/x.ini", "/"}}, "file-not-regular@/h/x.ini:0", {{"ODBCINI", "/h/x.ini"}}},
             {{{"/etc/odbcinst.ini", "gone"}}, "driver-file-missing@/etc/odbcinst.ini:0"},
             {{{"/etc/odbcinst.ini", "gone"}, {"/h/.odbcinst.ini", kDrivers}}, ""},
             {{{"/other/.odbc.ini", kSound}}, "homes-differ@/other/.odbc.ini:0", {{"HOME", "/other"}}},
             {{{"/h/odbc.ini", kSound}}, "file-not-read@/h/odbc.ini:0"},
             {{{user, "gone"}}, "no-data-sources@/h/.odbc.ini:0"},
             {{{user, "gone"}, {"/h/odbc.ini", kSound}}, "name-in-unread-file@/h/odbc.ini:3", {}, "A"},
             {{}, "name-in-unread-file@/home/you/.odbc.ini:1", {}, "Yours"},
             {{}, "name-unknown@/h/.odbc.ini:0", {}, "B"},
             {{{user, "gone"}}, "name-unknown@/h/.odbc.ini:0", {}, "A"},
             // Data sources.
             {{{user, listed("[A]\nDriver=God\n")}}, "driver-unknown@/h/.odbc.ini:4"},
             {{{user, listed("[A]\nDriver={Good}\n")}}, "driver-quoted@/h/.odbc.ini:4"},
             {{{user, listed("[A]\nDriver=Good ; mine\n")}}, "driver-comment@/h/.odbc.ini:4"},
             {{{user, listed("[A]\nServer=x\n")}}, "no-driver@/h/.odbc.ini:3"},
             {{{user, listed("[A]\nDriver=/x/good.so\n")}}, "driver-path-differs@/h/.odbc.ini:4"},
             {{{user, listed("[Other]\nDriver=Good\n")}}, "listed-without-section@/h/.odbc.ini:2"},
             {{{user, listed("")}}, "listed-without-section@/h/.odbc.ini:2"},
             {{{user, listed("")}, {"/etc/odbc.ini", "[A]\nDriver=Good\n"}}, ""},
             {{{user, listed("[A]\nDriver=Good\n[B]\nDriver=Good\n")}}, "section-not-listed@/h/.odbc.ini:5"},
             {{{user, "[Data Sources]\nA=Good\n[A]\nDriver=Good\n"}}, "list-misnamed@/h/.odbc.ini:1"},
             {{{user, listed("[A]\nDriver=Good\nDatabse=x\nServer=y\nOwn=z\n")}}, "key-unknown@/h/.odbc.ini:5"},
             {{{"/etc/odbcinst.ini", "[Good]\nDriver=psqlodbcw.so\n"},
               {user, listed("[A]\nDriver=Good\nServer=x\nUsername=x\nUID=y\n")}},
              "key-not-read@/h/.odbc.ini:5"},
             // Lines.
             {{{user, "\xEF\xBB\xBF" + ""s + kSound}}, "byte-order-mark@/h/.odbc.ini:1"},
             {{{user, "# mine\n [ODBC Data Sources]\nA=Good\n[A]\nDriver=Good\n"}},
              "file-refused@/h/.odbc.ini:2",
              {},
              "A"},
             {{{"/etc/odbcinst.ini", "x=1\n"s + kDrivers}}, "file-refused@/etc/odbcinst.ini:1", {}, "A"},
             {{}, "odbcinstini-empty@:0", {{"ODBCINSTINI", ""}}},
             {{{"/etc/sub/i.ini", kDrivers}}, "", {{"ODBCINSTINI", "sub/i.ini"}}},
             {{{"/h/odbcinst.ini", kDrivers}},
              "odbcini-is-driver-file@/h/odbcinst.ini:0",
              {{"ODBCINI", "/h/odbcinst.ini"}}},
             {{}, "name-is-driver@/etc/odbcinst.ini:1", {}, "good"},
             {{{user, "[ODBC Data Sources]\n" + std::string(33, 'n') + "=Good\n[" + std::string(33, 'n') +
                          "]\nDriver=Good\n"}},
              "name-too-long@/h/.odbc.ini:3"},
             {{{"/etc/odbcinst.ini", kDrivers + "[ODBC Drivers]\nGood=Installed\n"s}}, ""},
             {{{user, wide}}, "utf-16@/h/.odbc.ini:1"},
             {{{user, listed("[A]\r\nDriver=Good\r\n")}}, "dos-line-ends@/h/.odbc.ini:3"},
             {{{user, listed("[A]\nDriver=Good\nX=1 \nnothing\nX=2\nY=\"q\"\nZ=\xE4\n")}},
              "trailing-blank@/h/.odbc.ini:5 invalid-utf-8@/h/.odbc.ini:9 line-without-equals@/h/.odbc.ini:6 "
              "key-twice@/h/.odbc.ini:7 value-quoted@/h/.odbc.ini:8"},
             {{{user, listed("[A]\nDriver=Good\nX=" + std::string(998, 'x') + "\n[a]\nDriver=Good\n[A]\n")}},
              "line-too-long@/h/.odbc.ini:5 names-differ-in-case@/h/.odbc.ini:6 section-twice@/h/.odbc.ini:8"},
             // Drivers and tracing.
             {{{"/etc/odbcinst.ini", "[Good]\nSetup=x\n"}}, "driver-without-library@/etc/odbcinst.ini:1"},
             {{{"/etc/odbcinst.ini", "[ODBC]\nTrace=True\n"s + kDrivers}}, "trace-value@/etc/odbcinst.ini:2"},
             {{{"/etc/odbcinst.ini", "[ODBC]\nTrace=yes\nTraceFile=t.log\n"s + kDrivers}},
              "trace-path@/etc/odbcinst.ini:3"},
             {{{"/etc/odbcinst.ini", "[ODBC]\n"s + kDrivers}, {"/h/.odbcinst.ini", "[ODBC]\nTrace=1\n"}}, ""},
             {{{"/h/.odbcinst.ini", "[ODBC]\nTrace=1\n"}}, "trace-on@/h/.odbcinst.ini:2"},
         }) {
        EXPECT_EQ(told(doctor::diagnose(accountOf(row.files, row.variables), row.name)), row.told);
    }
    // What stands beside the text.
    doctor::Account account = accountOf({{"/h/.odbc.ini", kSound + "PWD=x\n"s}, {"/etc/odbc.ini", kSound}});
    account.files["/h/.odbc.ini"].mode = 0640;
    account.files["/etc/odbc.ini"].owner = 8;
    account.managers = {{"/lib/libodbc.so.2", {"/etc"}}, {"/p/libodbc-1.so", {"/p/etc"}}};
    EXPECT_EQ(told(doctor::diagnose(account)),
              "password-readable@/h/.odbc.ini:5 file-owner@/etc/odbc.ini:0 driver-managers@/p/libodbc-1.so:0");
}

TEST(DoctorTest, TellsWhyAConnectionFails) {
    using doctor::Encryption;
    using doctor::Reach;
    struct Case {
        std::string library;
        std::string settings;  // Behind the driver, from line 5 on.
        std::string words;
        Reach reach;
        std::string told;
        std::string server{};
        Encryption encryption = Encryption::kUnknown;
    };
    for (const Case& row : std::vector<Case>{
             {"x.so", "", "IM002: [unixODBC]Data source name not found", Reach::kNotLooked, "connection-im002:3"},
             {"x.so", "", "01000: [unixODBC]Can't open lib 'x.so' : file not found", Reach::kNotLooked,
              "connection-im003:3"},
             {"psqlodbcw.so", "Servername=h", "08001: could not translate", Reach::kUnresolved, "host-unresolved:5",
              "h"},
             {"psqlodbcw.so", "Port=7", "08001: x", Reach::kNoSocket, "socket-missing:3",
              "/var/run/postgresql/.s.PGSQL.7"},
             {"libmaodbc.so", "Port=1\nServer=h", "HY000: Can't connect", Reach::kRefused, "port-closed:6", "h (1)"},
             {"libmaodbc.so", "Server=localhost", "HY000: no", Reach::kNoSocket, "socket-missing:5",
              "/run/mysqld/mysqld.sock"},
             {"libtdsodbc.so", "Server=tcp:h,14", "08001: x", Reach::kSilent, "host-silent:5", "h (14)"},
             {"libmsodbcsql-17.so", "Server=h\\I", "HYT00: Login timeout", Reach::kReached, "connection-timeout:5",
              "h"},
             {"x.so", "Host=[::1]:4", "08001: x", Reach::kReached, "connection-08001:5", "::1 (4)"},
             {"x.so", "Host=::1\nPort=5", "HY000: odd", Reach::kReached, "connection-fails:5", "::1 (5)"},
             {"psqlodbcw.so", "Servername=h", "08001: FATAL: password authentication failed", Reach::kReached,
              "login-refused:5", "h (5432)"},
             {"libmaodbc.so", "Server=h", "HY000: Access denied for user 'a'@'b' (using password: NO)", Reach::kReached,
              "login-without-password:5", "h (3306)"},
             {"libmaodbc.so", "Server=h\nDatabase=d", "HY000: Unknown database 'd'", Reach::kReached,
              "database-unknown:6", "h (3306)"},
             {"psqlodbcw.so", "Servername=h", "08001: no pg_hba.conf entry for host, no encryption", Reach::kReached,
              "tls-required:5", "h (5432)", Encryption::kOffered},
             {"psqlodbcw.so", "Servername=h", "08001: no pg_hba.conf entry for host, no encryption", Reach::kReached,
              "host-not-admitted:5", "h (5432)", Encryption::kNotOffered},
             {"x.so", "Server=h", "08001: SSL error: certificate verify failed", Reach::kReached, "tls-certificate:5",
              "h"},
             {"libmaodbc.so", "Server=h", "HY000: TLS/SSL error", Reach::kReached, "tls-not-offered:5", "h (3306)",
              Encryption::kNotOffered},
             {"psqlodbcw.so", "Servername=h", "", Reach::kReached, "server-of-another-kind:5", "h (5432)"},
             {"psqlodbcw.so", "Servername=h:1", "08001: invalid sslmode value", Reach::kUnresolved, "setting-invalid:5",
              "h:1 (5432)"},
             {"libtdsodbc.so", "Servername=entry", "08001: x", Reach::kNotLooked, "connection-08001:5", "entry"},
             {"x.so", "Server=h", "", Reach::kReached, "connection-deadline:5", "h"}}) {
        doctor::Account account = accountOf({{"/etc/odbcinst.ini", "[Good]\nDriver=" + row.library + "\n"},
                                             {"/h/.odbc.ini", listed("[A]\nDriver=Good\n" + row.settings + "\n")}});
        account.connection = doctor::ConnectionFacts{false, !row.words.empty()};
        account.connection->diagnostics = {row.words};
        account.connection->look = {row.reach, row.encryption};
        const doctor::Findings findings = doctor::diagnose(account, "A");
        ASSERT_EQ(findings.size(), 1U) << row.words;
        EXPECT_EQ(findings[0].kind.name + ":"s + std::to_string(findings[0].line), row.told) << row.words;
        EXPECT_EQ(findings[0].subjects[1], row.server) << row.words;
    }
}

// Servers that were made for it: one answers each of two connections with the text, one only listens.
TEST(DoctorTest, LooksAtServers) {
    using doctor::Encryption;
    using doctor::Protocol;
    using doctor::Reach;
    const auto look = [](Protocol protocol, std::string_view answer, bool isListening = true) {
        const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof place;
        EXPECT_EQ(bind(server, reinterpret_cast<sockaddr*>(&place), size), 0);
        getsockname(server, reinterpret_cast<sockaddr*>(&place), &size);
        if (isListening) {
            listen(server, 1);
        }
        std::thread answering([&] {
            const int client = answer.empty() ? -1 : accept(server, nullptr, nullptr);
            EXPECT_TRUE(answer.empty() || send(client, answer.data(), answer.size(), 0) > 0);
            close(client);
        });
        const doctor::ServerLook seen = doctor::lookAtServer(
            {protocol, "127.0.0.1", std::to_string(ntohs(place.sin_port))}, std::chrono::milliseconds(1000));
        answering.join();
        close(server);
        return std::pair(seen.reach, seen.encryption);
    };
    constexpr auto kMySql =
        "\x20\0\0\0\x0A"
        "10.1\0aaaabbbbbbbb\0\xFF\xF7\x08"sv;
    constexpr auto kTds = "\x04\x01\0\x0F\0\0\x01\0\x01\0\x06\0\x01\xFF\x02"sv;
    for (const auto& [protocol, answer, expected] : {std::tuple{Protocol::kPostgreSql, "S"sv, Encryption::kOffered},
                                                     {Protocol::kPostgreSql, "N"sv, Encryption::kNotOffered},
                                                     {Protocol::kPostgreSql, "HTTP"sv, Encryption::kUnknown},
                                                     {Protocol::kMySql, kMySql, Encryption::kNotOffered},
                                                     {Protocol::kMySql, kMySql.substr(0, 12), Encryption::kUnknown},
                                                     {Protocol::kTds, kTds, Encryption::kNotOffered},
                                                     {Protocol::kTds, kTds.substr(0, 14), Encryption::kUnknown},
                                                     {Protocol::kUnknown, ""sv, Encryption::kUnknown}}) {
        EXPECT_EQ(look(protocol, answer), std::pair(Reach::kReached, expected)) << answer.size();
    }
    EXPECT_EQ(look(Protocol::kUnknown, "", false).first, Reach::kRefused);
    EXPECT_EQ(doctor::lookAtServer({Protocol::kUnknown, "no.such.host.invalid", "1"}, std::chrono::seconds(5)).reach,
              Reach::kUnresolved);
    EXPECT_EQ(doctor::lookAtServer({Protocol::kMySql, "", "", "/none/socket"}, std::chrono::seconds(5)).reach,
              Reach::kNoSocket);
    EXPECT_EQ(doctor::keysNotIn("ab\0Port\0S\0e\0r\0v\0e\0r\0\0\0U\0\0\0I\0\0\0D\0\0\0"sv,
                                {"port", "server", "uid", "database"}),
              std::set<std::string>{"database"});
}

TEST(DoctorTest, FindsTheNearestName) {
    using Names = std::vector<std::string>;
    const auto near = [](const char* name, const Names& names, bool hasParts = true) {
        return doctor::nearest(name, names, hasParts);
    };
    EXPECT_EQ(near("SQLite3 ODBC Driver", {"SQLite", "SQLite3"}), "SQLite3");
    EXPECT_EQ(near("tset", {"best", "test"}), "test");
    EXPECT_EQ(near("Sevrername", {"Server", "Servername"}, false), "Servername");
    EXPECT_EQ(near("ReportError", {"Port"}, false), "");
    EXPECT_EQ(near("B", {"A"}), "");
}

TEST(DoctorTest, TellsWhyTheLoaderDoesNotFindALibraryThatIsThere) {
    const TemporaryFolder folder;
    const std::string driver =
        folder.write("driver.c", "int needed(void); int SQLConnect(void) { return needed(); }\n");
    const std::string needed = folder.write("needed.c", "int needed(void) { return 0; }\n");
    for (const char* version : {"V1", "V2"}) {
        folder.write(version, std::string(version) + " { global: needed; };\n");
    }
    const std::string text = folder.write("text.so", "INPUT(-lc)\n");
    const auto run = [&folder](const std::string& command) {
        ASSERT_EQ(std::system(("cd '" + folder.path("") + "' && " + command).c_str()), 0) << command;
    };
    const std::string link = VH_TEST_C_COMPILER " -shared -fPIC -o ";
    run("mkdir old far && " + link + "libvhneeded.so -Wl,-soname,libvhneeded.so,--version-script=V2 needed.c");
    run(link + "old/libvhneeded.so -Wl,-soname,libvhneeded.so,--version-script=V1 needed.c");
    run(link + "absent.so driver.c -L. -lvhneeded && " + link +
        "sound.so driver.c -L. -lvhneeded -Wl,-rpath,'$ORIGIN'");
    run(link + "old.so driver.c -L. -lvhneeded -Wl,-rpath,'$ORIGIN/old' && mv absent.so far/absent.so");
    run(link +
        "other.so needed.c && ld -m elf_i386 -shared -b binary needed.c -o narrow.so && head -c 2000 other.so >cut.so");
    for (const auto& [library, others, expected] : {std::tuple{"sound.so", "", ""},
                                                    {"far/absent.so", "", "dependency-missing"},
                                                    {"far/absent.so", ".", "dependency-not-searched"},
                                                    {"old.so", "", "version-missing"},
                                                    {"narrow.so", "", "library-architecture"},
                                                    {"other.so", "", "not-a-driver"},
                                                    {"cut.so", "", "not-a-library"},
                                                    {"text.so", "", "not-a-library"},
                                                    {"none.so", "", "library-missing"}}) {
        const std::string path = folder.path(library);
        doctor::Account account = accountOf({{"/etc/odbcinst.ini", "[Good]\n# mine\nDriver=" + path + "\n"}});
        account.libraries[path] = doctor::examineLibrary(
            path, "", *others == '\0' ? doctor::Folders() : doctor::Folders{folder.path(others)});
        EXPECT_EQ(told(doctor::diagnose(account)), *expected == '\0' ? "" : expected + "@/etc/odbcinst.ini:3"s)
            << library;
    }
}

TEST(DoctorTest, HasNothingToSayOfManySoundDataSources) {
    std::string list = "[ODBC Data Sources]\n";
    std::string sections;
    for (int number = 0; number < 300; ++number) {
        list += "Source" + std::to_string(number) + "=Good\n";
        sections += "[Source" + std::to_string(number) + "]\nDriver=Good\nDatabase=/d\nServer=s\nPort=1\n\n";
    }
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(told(doctor::diagnose(accountOf({{"/h/.odbc.ini", list + sections}}))), "");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(200));
}

}  // namespace

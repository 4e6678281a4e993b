#include "doctor/diagnosis.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

#include "tests/support/temporary_folder.h"

using namespace std::string_literals;

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
             {{{user, "gone"}, {"/h/odbc.ini", kSound}},
              "name-in-unread-file@/h/odbc.ini:3 file-not-read@/h/odbc.ini:0"
              " no-data-sources@/h/.odbc.ini:0",
              {},
              "A"},
             {{}, "name-unknown@/h/.odbc.ini:0", {}, "B"},
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
             // Lines.
             {{{user, "\xEF\xBB\xBF" + ""s + kSound}},
              "byte-order-mark@/h/.odbc.ini:1 section-not-listed@/h/.odbc.ini:3"},
             {{{user, wide}}, "utf-16@/h/.odbc.ini:1 no-data-sources@/h/.odbc.ini:0"},
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

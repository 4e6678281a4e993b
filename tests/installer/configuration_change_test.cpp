#include "installer/configuration_change.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "installer/configuration.h"
#include "installer/configuration_reader.h"
#include "tests/support/child_process.h"
#include "tests/support/odbc_files.h"
#include "tests/support/system_fault.h"

using installer::ChangeFailure;
using installer::ConfigurationChange;

namespace {

const std::string kLongLine = "Long=" + std::string(5000, 'l') + "\n";

class ConfigurationChangeTest : public testing::Test {
protected:
    ConfigurationChangeTest() { installer::useUserConfiguration(); }

    // Carries out steps "Section/key=value", "Section/key" (delete) and "Section" (remove the data source).
    static std::optional<ChangeFailure> change(const std::vector<std::string>& steps) {
        ConfigurationChange file;
        for (const std::string& step : steps) {
            const std::size_t slash = step.find('/');
            const std::size_t equals = step.find('=');
            if (slash == std::string::npos) {
                file.removeDataSource(step);
            } else {
                file.write(step.substr(0, slash), step.substr(slash + 1, equals - slash - 1),
                           equals == std::string::npos ? nullptr : step.substr(equals + 1).c_str());
            }
        }
        return file.commit();
    }
    std::string text() const { return files.read(OdbcFiles::kUser); }

    OdbcFiles files;
};

TEST_F(ConfigurationChangeTest, OnlyTheChangeIsMade) {
    struct Case {
        std::string before;
        std::initializer_list<std::string> steps;
        std::string after;
    };
    for (const auto& [before, steps, after] : {
             Case{"", {"A/k=1", "L/A=D"}, "[A]\nk=1\n\n[L]\nA=D\n"},
             Case{"; c\n\n[A]\n# d\nk = 1\n; e\nz=\n\n\n[B]\nq\n",
                  {"a/K=2"},
                  "; c\n\n[A]\n# d\nK=2\n; e\nz=\n\n\n[B]\nq\n"},
             Case{"[A]\r\nk  = 1\r\n# d\r\n\r\n[B]\r\n",
                  {"A/k= 2\t", "A/new=3"},
                  "[A]\r\nk  = 2\r\nnew=3\r\n# d\r\n\r\n[B]\r\n"},
             Case{"[A]\nk=1\nk=2\n[A]\nk=3", {"A/k=9"}, "[A]\nk=9\nk=2\n[A]\nk=3"},
             Case{"[A]\nk=1\nk=2\n[A]\nk=3", {"A/k", "A/n=4"}, "[A]\nn=4\n[A]\nk=3"},
             Case{"[A]\nk=1", {"N/x=1"}, "[A]\nk=1\n\n[N]\nx=1"},
             Case{"[A]\nk=1\n\n[N]\nx=1", {"N"}, "[A]\nk=1"},
             Case{"[A]\nk=1\n\n", {"N/x=1"}, "[A]\nk=1\n\n[N]\nx=1\n\n"},
             Case{"[A]\nk=1\n\n[N]\nx=1\n\n", {"n"}, "[A]\nk=1\n\n"},
             Case{"[ODBC Data Sources]\nN=D\nB=D\nn=D\n[N]\n# kept\nx=1\n# B's\n[B]\n\xff=\xe4\n[N]\ny=2\n",
                  {"N"},
                  "[ODBC Data Sources]\nB=D\n# kept\n# B's\n[B]\n\xff=\xe4\n"},
             Case{"[A]\n" + kLongLine + "k=1\n", {"A/k=2", "B/x=1"}, "[A]\n" + kLongLine + "k=2\n\n[B]\nx=1\n"},
             Case{"[A]\nk=1\n", {"A/k=1", "A/none", "Nobody"}, "[A]\nk=1\n"},
         }) {
        files.write(OdbcFiles::kUser, before);
        EXPECT_FALSE(change(steps)) << before;
        EXPECT_EQ(text(), after);
    }
}

// In plain texts the library sees a few of them at a time.
TEST_F(ConfigurationChangeTest, ManyStepsAreMadeInTheirOrder) {
    std::string keys;
    std::vector<std::string> steps{"A"};
    for (int i = 0; i < 100; ++i) {
        keys += "k" + std::to_string(i) + "=v\n";
        steps.push_back("b/k" + std::to_string(i) + "=v");
    }
    steps.insert(steps.end(), {"b/K0", "b/last=1", "C/K0=2", "b/k0=3"});
    for (const std::string comment : {"# plain\n", "# with a\ttab\n"}) {
        files.write(OdbcFiles::kUser, comment + "[A]\nj=1\n" + keys + "# of A\n[C]\nk0=1\n");
        EXPECT_FALSE(change(steps));
        EXPECT_EQ(text(), comment + "# of A\n[C]\nK0=2\n\n[b]\n" + keys.substr(5) + "last=1\nk0=3\n");
    }
}

// Files as people have them: a data source that comes, changes and goes again leaves no trace.
TEST_F(ConfigurationChangeTest, ADataSourceComesChangesAndGoes) {
    std::string thousand = "[ODBC Data Sources]\n";
    for (int i = 0; i < 1000; ++i) {
        thousand += "S" + std::to_string(i) + "=D\n";
    }
    for (int i = 0; i < 1000; ++i) {
        thousand += "\n# next\n[S" + std::to_string(i) + "]\nDriver = D\n";
    }
    const std::string list = "; mine\n[ODBC Data Sources]\nA=D\n";
    const std::string longLine = list + "[A]\n" + kLongLine + "# c\n";
    for (const std::string& before :
         {thousand, list, longLine, list + "[A]\nk=1\n[A]\nk=2\nk=3",
          std::string("[ODBC Data Sources]\r\n\r\n[A]\r\nk=1\r\n\r\n"), list + "[A]\n\xff\x80=\xc3\n\tnoise\n[]\n\n"}) {
        files.write(OdbcFiles::kUser, before);
        EXPECT_FALSE(change({"New/Driver=D", "New/k=1", "ODBC Data Sources/New=D"}));
        EXPECT_EQ(installer::readSection("New", installer::kDataSourceFile).size(), 2U);
        EXPECT_FALSE(change({"New/k=2", "New/Driver"}));
        EXPECT_EQ(installer::readValue("New", "k", installer::kDataSourceFile), "2");
        EXPECT_FALSE(change({"New"}));
        EXPECT_EQ(text(), before);
    }
}

TEST_F(ConfigurationChangeTest, WhatTheLibraryCanNotKeepIsToldByItsLine) {
    using Reason = ChangeFailure::Reason;
    struct Case {
        std::string before;
        std::string step;
        Reason reason;
        int line;
    };
    for (const auto& [before, step, reason, line] : {
             Case{"[A]\n# c\n" + kLongLine, "A/Long=1", Reason::kBadLine, 3},
             Case{"# c\nk=1\n[A]\n", "A/k=2", Reason::kBadLine, 2},
             Case{"[A]\n", "A/k=" + std::string(998, 'v'), Reason::kLineTooLong, 0},
             Case{"[A]\n", "A/k=1\n[B]", Reason::kLineTooLong, 0},
             Case{"# c\n[A]\n", "A/#k=1", Reason::kRefused, 0},
         }) {
        files.write(OdbcFiles::kUser, before);
        const std::optional<ChangeFailure> failure = change({step});
        ASSERT_TRUE(failure) << before;
        EXPECT_EQ(failure->reason, reason);
        EXPECT_EQ(failure->line, line);
        EXPECT_EQ(failure->file, files.path(OdbcFiles::kUser));
        EXPECT_EQ(text(), before);
    }
    remove(files.path(OdbcFiles::kUser).c_str());
    mkfifo(files.path(OdbcFiles::kUser).c_str(), 0600);  // to be opened by nobody
    EXPECT_EQ(change({"A/k=1"}).value().error, EINVAL);
    const ScopedEnvironment nowhere{{"ODBCINI", files.path("none/odbc.ini")}};
    EXPECT_EQ(change({"A/k=1"}).value().error, ENOENT);
}

TEST_F(ConfigurationChangeTest, TheFileStaysWhatItIsAndItsFirstTextIsKept) {
    const std::string target = files.write("target.ini", "[A]\nk=1\n");
    const std::string file = files.path(OdbcFiles::kUser);
    ASSERT_EQ(symlink("target.ini", file.c_str()), 0);
    chmod(target.c_str(), 0640);
    const bool isRoot = chown(target.c_str(), 1234, 4321) == 0;
    const bool hasAttribute = setxattr(target.c_str(), "user.note", "mine", 4, 0) == 0;
    for (const bool hasTwoNames : {false, true}) {
        struct stat before {};
        if (hasTwoNames) {
            // Written in place.
            ASSERT_EQ(link(target.c_str(), files.path("other.ini").c_str()), 0);
        }
        stat(target.c_str(), &before);
        EXPECT_FALSE(change({"A/k=" + std::string(hasTwoNames ? "3" : "22")}));
        struct stat after {};
        stat(target.c_str(), &after);
        EXPECT_EQ(after.st_ino == before.st_ino, hasTwoNames);
        EXPECT_EQ(after.st_mode & 07777, 0640U);
        EXPECT_EQ(after.st_uid, isRoot ? 1234U : getuid());
        EXPECT_EQ(after.st_gid, isRoot ? 4321U : getgid());
        char note[5] = "";
        EXPECT_EQ(getxattr(file.c_str(), "user.note", note, 4), hasAttribute ? 4 : -1);
        EXPECT_STREQ(note, hasAttribute ? "mine" : "");
        EXPECT_TRUE(std::filesystem::is_symlink(file));
        EXPECT_EQ(text(), hasTwoNames ? "[A]\nk=3\n" : "[A]\nk=22\n");
        EXPECT_EQ(files.read("target.ini~"), "[A]\nk=1\n");
        stat(files.path("target.ini~").c_str(), &after);
        EXPECT_EQ(after.st_mode & 07777, 0640U);
        EXPECT_EQ(after.st_uid, isRoot ? 1234U : getuid());
    }
    unsetenv("VH_KEPT_SETTINGS");
    files.write("target.ini", "");
    EXPECT_TRUE(!change({"A/k=4"}) && files.read("target.ini~") == "[A]\nk=1\n") << "an empty file is not kept";
}

// In the place of the file or, for one with two names, in place: whatever the system does not do, and at whatever call
// the process is killed, the file holds the old text or the new one, and the report is true.
TEST_F(ConfigurationChangeTest, AFailureOrAKillAtAnyCallLeavesOneTextWhole) {
    const std::string home = files.path("");
    const ScopedEnvironment copies{{"HOME", home}};
    const std::string before = "[A]\nk=1\n# c\nz=1\n";
    using Case = std::pair<std::string, std::string>;
    for (const Case& test : {Case{"A/k=22", "[A]\nk=22\n# c\nz=1\n"}, {"A/k", "[A]\n# c\nz=1\n"}}) {
        const std::string& step = test.first;
        const std::string& after = test.second;
        for (const bool isInPlace : {false, true}) {
            for (const Fault kind : {Fault::kActsAndFails, Fault::kDiskIsGone, Fault::kKilled}) {
                int count = 0;
                for (bool happens = true; happens; ++count) {
                    remove(files.path("other").c_str());
                    files.write(OdbcFiles::kUser, before);
                    if (isInPlace) {
                        ASSERT_EQ(link(files.path(OdbcFiles::kUser).c_str(), files.path("other").c_str()), 0);
                    }
                    unsetenv("VH_KEPT_SETTINGS");
                    const int result = runInChild([&] {
                        std::filesystem::current_path(home);
                        setenv("ODBCINI", OdbcFiles::kUser, 1);  // No directory stands in it.
                        auto fault = std::make_unique<SystemFault>(kind, count, EIO);
                        const std::optional<ChangeFailure> failure = change({step});
                        const bool happened = fault->happened();
                        fault.reset();
                        // Then the old text is in a copy, and the report says where.
                        const bool isHalf = failure && failure->reason == ChangeFailure::kLeftHalf;
                        if (isHalf) {
                            rename(failure->copy.c_str(), files.path(OdbcFiles::kUser).c_str());
                        }
                        return (happened ? 2 : 0) + (failure ? 1 : 0);
                    });
                    happens = result < 0 || result >= 2;
                    const bool isWhole = text() == before || text() == after ||
                                         // Not cut yet.
                                         (result < 0 && isInPlace && text().starts_with(after) &&
                                          text().find_first_not_of('\n', after.size()) == std::string::npos);
                    EXPECT_TRUE(isWhole) << int(kind) << " " << count << ":\n" << text();
                    if (result >= 0) {
                        EXPECT_EQ(text() == before, (result & 1) != 0) << int(kind) << " " << count;
                    }
                }
                EXPECT_TRUE(count > 15 && text() == after) << count << ":\n" << text();
            }
        }
    }
    EXPECT_FALSE(change({"A/k=3"}));
    remove(files.path("other").c_str());
    EXPECT_FALSE(change({"A/k=3", "B/x=1"}));
    EXPECT_FALSE(std::filesystem::exists(files.path(".odbcadmin-new")));
}

TEST_F(ConfigurationChangeTest, ManyKillsAndManyWritersLoseNothing) {
    constexpr int kTimes = 200;
    std::string all;
    for (int i = 0; i < 300; ++i) {
        all += "[S" + std::to_string(i) + "]\n# of S\nk=0\n";
    }
    files.write(OdbcFiles::kUser, all);
    for (int i = 0; i < kTimes; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            while (true) {
                change({"S299/k=" + std::string(100, 'x')});
                change({"S299/k=0"});
            }
        }
        usleep(static_cast<useconds_t>(i * 97 % 9000));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const std::string now = text();
        ASSERT_TRUE(now == all || now == all.substr(0, all.size() - 2) + std::string(100, 'x') + "\n") << i;
    }
    files.write(OdbcFiles::kUser, all);
    std::vector<pid_t> writers;
    for (const std::string section : {"S1", "S2"}) {
        writers.push_back(fork());
        if (writers.back() == 0) {
            bool failed = false;
            for (int i = 1; i <= kTimes; ++i) {
                failed = change({section + "/n" + std::to_string(i) + "=1"}).has_value() || failed;
            }
            _exit(failed ? 1 : 0);
        }
    }
    for (const pid_t writer : writers) {
        int status = 0;
        waitpid(writer, &status, 0);
        EXPECT_EQ(status, 0);
    }
    for (const std::string section : {"S1", "S2"}) {
        EXPECT_EQ(installer::readSection(section, installer::kDataSourceFile).size(), kTimes + 1U);
    }
}

// A program that knows nothing of us writes between our reading and our writing.
TEST_F(ConfigurationChangeTest, TheChangeIsMadeAnewOnWhatAnotherProgramWrote) {
    files.write(OdbcFiles::kUser, "[A]\nk=1\n");
    inTheSync = [this] {
        files.write("theirs", "[A]\nk=1\n# theirs\n");
        std::filesystem::rename(files.path("theirs"), files.path(OdbcFiles::kUser));
    };
    setenv("VH_KEPT_SETTINGS", (std::to_string(getpid()) + " " + files.path(OdbcFiles::kUser)).c_str(), 1);
    EXPECT_FALSE(change({"A/k=2"}));
    EXPECT_EQ(text(), "[A]\nk=2\n# theirs\n");
}

}  // namespace

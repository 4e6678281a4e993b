#include "kvini/cache.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>

#include "bos/file.h"
#include "kvini/cache_list.h"
#include "kvini/profile.h"
#include "kvlib/text.h"
#include "tests/support/child_process.h"
#include "tests/support/error_collector.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/system_fault.h"
#include "tests/support/temporary_folder.h"

using namespace std::string_literals;

namespace {

constexpr const char* kDefault = "(default)";
constexpr uid_t kUser = 65534;
constexpr gid_t kGroup = 65533;

class IniFileTest : public testing::Test {
protected:
    // A cache of the folder's file with this text.
    void load(std::string_view text) {
        folder_.write("file.ini", text);
        ASSERT_EQ(cache_.bosKvIniOpen(path_.c_str(), 0), 0U);
    }

    std::string value(const char* section = "S", const char* entry = "A", unsigned long size = 4096) {
        std::string buffer(size + 1, '#');
        const unsigned long length = cache_.bosGetProfileString(section, entry, kDefault, buffer.data(), size);
        EXPECT_EQ(buffer[size], '#');
        EXPECT_TRUE(length == size || buffer[length] == '\0' || section == nullptr || entry == nullptr);
        return buffer.substr(0, length);
    }
    int put(const char* text) { return cache_.bosPutProfileString("S", "A", text); }

    void changeFile(std::string_view text, time_t date) {
        folder_.write("file.ini", text);
        const timespec times[2] = {{1000, 0}, {date, 0}};
        utimensat(AT_FDCWD, path_.c_str(), times, 0);
    }

    using Names = std::set<std::string>;
    Names files() const {
        Names names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

    TemporaryFolder folder_;
    const std::string path_ = folder_.path("file.ini");
    KvIniFileCache cache_;
};

TEST_F(IniFileTest, Lookups) {
    const struct {
        const char* label;
        std::string text;
        const char *section, *entry;  // null lists them
        std::string expected;
        unsigned long size = 4096;
    } rows[] = {
        {"names without case, trailing blanks kept", "[ODBC]\ndir = /x  \n", "odbc", "Dir", "/x  "},
        {"many equal signs and blanks", "[S]\nA \t== =b=c\n", "S", "A", "b=c"},
        {"value of blanks is empty", "[S]\nA=  \nB=2\n", "S", "A", kDefault},
        {"no final line end", "[S]\nA=1", "S", "A", "1"},
        {"carriage return stays in the value", "[S]\r\nA=1\r\n", "S", "A", "1\r"},
        {"first of two sections", "[S]\nA=1\n[s]\nA=2\nB=3\n", "S", "B", kDefault},
        {"blanks inside a key", "[S]\n  my key  = x\n", "S", "my key", "x"},
        {"blanks of a section name count", "[S ]\nA=1\n[ S ]\nA=2\n[S]\nA=3\n", " s ", "A", "2"},
        {"comments, and their marks in a value", "[S]\n;A=1\n \t# A=2\nA=3;x\n", "S", "A", "3;x"},
        {"a line of blanks is one without an equal sign", "[S]\n \nA=1\nB=2\n", "S", "A", kDefault},
        {"text behind a header", "[S] A=0\nA=1\n", "S", "A", "1"},
        {"header after other text", ";[Old]\nA=1\n[S]\nx [Old]\nA=1\n [Old]\nA=1\n", "Old", "A", kDefault},
        {"header right behind a header", "[S][T]\nA=1\n", "T", "A", "1"},
        {"no chain behind a commented-out header", ";[Old][New]\nA=1\n", "New", "A", kDefault},
        {"header ended on a later line", "[S\nA=1\n[T]\nB=2\n", "S\nA=1\n[T", "B", "2"},
        {"line without an equal sign begins the key", "[S]\njunk\nA=1\nB=2\n", "S", "junk\nA", "1"},
        {"but not that of another section", "[S]\njunk\n[T]\nA=1\n", "S", "junk\n[T]\nA", kDefault},
        {"bracket in a value stays in it", "[S]\nA=x[y\nB=2\n", "S", "A", "x[y"},
        {"and ends the section, as one in a comment does", "[S]\n;[\nA=1\n", "S", "A", kDefault},
        {"zero bytes are characters", "[S]\nA=1\0x\nB=2\n"s, "S", "A", "1\0x"s},
        {"names that begin alike", "[Section]\nKeys=1\nKey=2\n[Sec]\nKeys=4\nKey=3\n", "Sec", "Key", "3"},
        {"values end at 2,047 bytes", "[S]\nA=" + std::string(3000, 'v') + "\n", "S", "A", std::string(2047, 'v')},
        {"exactly the size counts as cut", "[S]\nA=abcdef\n", "S", "A", "abcde\0"s, 6},
        {"no room at all", "[S]\nA=abcdef\n", "S", "A", "", 0},
        {"a default that is cut is not told", "[S]\n", "S", "A", "(d", 3},
        {"blanks, left out only before the first key", "[S]\n  A =1\n  B=2\n", "S", nullptr, "A \0  B\0\0"s},
        {"comment behind a blank is a key", "[S]\n;x=1\nA=1\n#y\n ;z=1\n", "S", nullptr, "A\0 ;z\0\0"s},
        {"lines without one run on", "[S]\r\njunk\nA=1\r\n\r\nB=2\nrest", "S", nullptr, "junkA\0\rB\0rest\0"s},
        {"bracket in a value ends the list", "[S]\nA=x[\nB=2\n", "S", nullptr, "A\0\0"s},
        {"nothing but a comment", "[S]\n;x\n[T]\n", "S", nullptr, "\0"s},
        {"keys of an empty section", "[S]\n[T]\nA=1\n", "S", nullptr, kDefault},
        {"keys, exactly full", "[S]\nAb=1\nCd=2\n", "S", nullptr, "Ab\0Cd\0\0"s, 7},
        {"cut in a key", "[S]\nAb=1\nCd=2\n", "S", nullptr, "Ab\0C\0"s, 5},
        {"sections", "[A]\nx=1\n;[B]\n[C D]\n[A]\n", nullptr, nullptr, "A\0C D\0A\0\0"s},
        {"sections, exactly full", "[A]\n[B]\n", nullptr, nullptr, "A\0B\0\0"s, 5},
        {"sections, cut in a name", "[Ab]\n[Cd]\n", nullptr, nullptr, "Ab\0C\0\0"s, 6},
        {"no section, nor a header without its end", "A=1\n[S", nullptr, nullptr, "\0"s},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        load(row.text);
        EXPECT_EQ(value(row.section, row.entry, row.size), row.expected);
    }
    for (const auto& [text, expected] :
         {std::pair{"12abc", 12U}, {"-5", 7U}, {"4294967295", ~0U}, {"4294967296", 7U}}) {
        load(std::string("[S]\nN=") + text + "\n");
        EXPECT_EQ(cache_.bosGetProfileInt("S", "N", 7), expected) << text;
    }
}

TEST_F(IniFileTest, TheWideFormReturnsWhatTheOtherDoes) {
    load("[S]\nAb=abcdef\nCd=2\n");
    const std::tuple<const char16_t*, unsigned long, std::u16string, unsigned long> rows[] = {
        {u"Ab", 6, u"abcde\0###"s, 6},
        {u"Ab", 0, u"#########", 0},
        {u"X", 3, u"xy\0######"s, 2},
        {nullptr, 6, u"Ab\0C\0\0###"s, 6}};
    for (const auto& [entry, size, expected, length] : rows) {
        std::u16string wide(9, u'#');
        EXPECT_EQ(cache_.bosGetProfileStringW(u"S", entry, u"xyz", wide.data(), size), length);
        EXPECT_EQ(wide, expected);
    }
}

TEST_F(IniFileTest, Updates) {
    const struct {
        const char* label;
        std::string text;
        const char *section, *entry, *value;
        std::string expected;
    } rows[] = {
        {"the first, in the caller's spelling", "[S]\n  a = 1\na=2\n", "s", "A", "x", "[S]\n  A=x\na=2\n"},
        {"without a line end", "[S]\nA=1", "S", "A", "", "[S]\nA=\n"},
        {"carriage return goes", "[S]\r\nA=1\r\nB=2\r\n", "S", "A", "x", "[S]\r\nA=x\nB=2\r\n"},
        {"new entry comes first, header as the caller spells it", "[Sec]\nA=1\n", "sEC", "N", "x", "[sEC]\nN=x\nA=1\n"},
        {"new entry under a header without a line end", "[S]", "S", "N", "x", "[S]\nN=x\n"},
        {"one character behind the header is lost", "[S][T]\nA=1\n", "S", "N", "x", "[S]\nN=x\nT]\nA=1\n"},
        {"new section at the end", "[S]\nA=1\0x\n"s, "T", "N", "x", "[S]\nA=1\0x\n[T]\nN=x\n"s},
        {"which continues an open line", "[S]\nA=1", "T", "N", "x", "[S]\nA=1[T]\nN=x\n"},
        {"an entry goes, blanks before it stay", "[S]\n A=1\n[T]\nB=2\n", "S", "a", nullptr, "[S]\n [T]\nB=2\n"},
        {"delete a missing entry", "[S]\nA=1\n", "S", "X", nullptr, "[S]\nA=1\n"},
        {"delete a section", ";x\n[S]\nA=1\n\n[T]\nB=2\n", "s", nullptr, nullptr, ";x\n[T]\nB=2\n"},
        {"up to a bracket in a value", "[S]\nA=x[y\nB=2\n", "S", nullptr, "x", "[y\nB=2\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        load(row.text);
        EXPECT_EQ(cache_.bosPutProfileString(row.section, row.entry, row.value), 1);
        EXPECT_EQ(folder_.read("file.ini"), row.expected);
    }
}

TEST_F(IniFileTest, ChangesByOthersAreSeen) {
    load("[S]\nA=1\n");
    changeFile("[S]\nA=22\n", 1);
    EXPECT_EQ(value(), "22");
    changeFile("[S]\nA=33\n", 2);
    EXPECT_EQ(value(), "33") << "same size, other date";
    changeFile("[S]\nA=44\n", 2);
    EXPECT_EQ(value(), "33") << "same size and date";
    changeFile("[T]\nB=1\n", 3);
    {
        const StayingChild other([&] {
            const int descriptor = open(path_.c_str(), O_RDWR);
            return bosRegionLock(descriptor, RegionLock::kExclusive, 1, 1) == 0;
        });
        ErrorCollector errors;
        EXPECT_TRUE(other.worked() && put("5") == 0 && errors.numbers() == "1512") << errors.numbers();
        EXPECT_EQ(folder_.read("file.ini"), "[T]\nB=1\n");
    }
    // Between the look at its date and the lock, in the same second and to the same size.
    value();
    changeFile("[U]\nB=1\n", 3);
    EXPECT_EQ(put("5"), 1);
    EXPECT_EQ(folder_.read("file.ini"), "[U]\nB=1\n[S]\nA=5\n") << "an update builds on what is there now";

    for (const bool isListening : {true, false}) {
        changeFile(isListening ? "[S]\nA=77\n" : "[S]\nA=7\n", 4);
        const auto errors = isListening ? std::make_unique<ErrorCollector>() : nullptr;
        const SystemFault fault(Fault::kActsAndFails, 1, EROFS);
        EXPECT_EQ(value(), isListening ? "77" : "7") << "a file system that can only be read";
        EXPECT_TRUE(!isListening || errors->numbers().empty()) << errors->numbers();
    }
    std::filesystem::remove(path_);
    EXPECT_EQ(cache_.proFileSync(), 1U);
    EXPECT_EQ(value(), kDefault);
    EXPECT_EQ(put("6"), 0);
    changeFile("[S]\nA=7\n", 4);
    EXPECT_EQ(value(), "7");
}

TEST_F(IniFileTest, RightsDecideWhatIsReadAndWritten) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "Only root can give its rights away.";
    }
    const ScopedEnvironment environment{{"HOME", folder_.path()}, {"ODBCINST", {}}, {"ODBCINSTINI", {}}};
    const struct {
        const char* label;
        std::string name;
        mode_t folder, file;  // for a user who owns neither
        std::string valueRead, errors, textAfter = "[S]\nA=1\n";
    } rows[] = {
        {"writable, without a copy", path_, 0755, 0666, "1", "", "[S]\nA=3\n"},
        {"readable only, though a copy could be made", path_, 0777, 0644, "1", "1508"},
        {"neither", path_, 0755, 0600, "", "1508w"},
        {"missing", folder_.path("absent"), 0755, 0644, "", "1509w"},
        {"a folder", folder_.path(), 0755, 0644, "", "30041w"},
        {"missing driver file fails when it is written", ".odbcinst.ini", 0755, 0644, "", "1509"},
    };
    for (const auto& row : rows) {
        for (const bool isListening : {true, false}) {
            SCOPED_TRACE(testing::Message() << row.label << (isListening ? "" : ", nobody listens"));
            load("[S]\nA=1\n");
            chmod(folder_.path().c_str(), row.folder);
            chmod(path_.c_str(), row.file);
            ASSERT_EQ(seteuid(kUser), 0);
            const auto errors = isListening ? std::make_unique<ErrorCollector>() : nullptr;
            EXPECT_EQ(cache_.bosKvIniOpen(row.name.c_str(), 0), row.errors.ends_with("w") ? 1U : 0U);
            EXPECT_EQ(value(), row.valueRead.empty() ? kDefault : row.valueRead);
            EXPECT_EQ(put("3"), row.textAfter == "[S]\nA=3\n" ? 1 : 0);
            EXPECT_TRUE(!isListening || errors->numbers() == row.errors) << errors->numbers();
            ASSERT_EQ(seteuid(0), 0);
            EXPECT_EQ(folder_.read("file.ini"), row.textAfter);
            EXPECT_EQ(files(), Names{"file.ini"});
        }
    }
    const ScopedEnvironment driver{{"ODBCINST", path_ + "/below"}};
    ErrorCollector errors;
    EXPECT_EQ(cache_.bosKvIniOpen(".odbcinst.ini", 0), 1U) << "only a missing driver file is forgiven";
    EXPECT_EQ(errors.numbers(), "30041");
}

// Each step of an update in turn meets the fault, until the update has no more steps.
TEST_F(IniFileTest, NoFaultInAnUpdateLosesTheOldText) {
    constexpr int kWritten = 1, kUntold = 2, kForgotten = 4, kNoFault = 8;
    const std::string old = "[S]\nA=a value of some length\n";
    const std::string updated = "[S]\nA=another value, longer than the old one\n";
    for (const Fault kind : {Fault::kFailsWithoutMemory, Fault::kActsAndFails, Fault::kMemoryEnds, Fault::kIsClosed,
                             Fault::kDiskIsGone, Fault::kKilled}) {
        const bool isOneFailure = kind != Fault::kDiskIsGone && kind != Fault::kKilled;
        int refused = 0;
        int lost = 0;
        int result = 0;
        for (int step = 0; result != (kWritten | kNoFault); ++step) {
            SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(kind) << ", step " << step);
            load(old);
            result = runInChild([&] {
                ErrorCollector errors;
                auto fault = std::make_unique<SystemFault>(kind, step);
                const int written = put("another value, longer than the old one");
                const int told = written == 1 || KvErrorKeeper::getLastErrorNumber() != 0 ? 0 : kUntold;
                const int happened = fault->happened() ? 0 : kNoFault;
                fault = nullptr;
                return written | told | happened | (isOneFailure && value() == kDefault ? kForgotten : 0);
            });
            EXPECT_TRUE(kind == Fault::kKilled || (result & (kUntold | kForgotten)) == 0) << result;
            refused += result == 0 ? 1 : 0;
            const std::string text = folder_.read("file.ini");
            EXPECT_TRUE(result < kWritten || text == updated) << text;
            if (text != old && (result == 0 || (result < 0 && text != updated))) {
                ++lost;
                EXPECT_EQ(folder_.read("file.ini~"), old);
            }
            EXPECT_TRUE(files() == Names{"file.ini"} || result == kWritten || !isOneFailure);
            std::filesystem::remove(folder_.path("file.ini~"));
        }
        // After one failure the old text is back. The copy is for worse: between the emptying and the last byte of a
        // rewrite that ends there, the file holds neither text.
        EXPECT_EQ(refused > 5, kind != Fault::kKilled);
        EXPECT_TRUE(isOneFailure ? lost == 0 : lost > 3) << lost;
    }
    syncs = 0;
    EXPECT_EQ(put("1"), 1);
    EXPECT_EQ(syncs, 3) << "the copy, its name and the file";
}

TEST_F(IniFileTest, AFileReadInTheMiddleOfARewriteIsReadAgain) {
    ErrorCollector errors;
    {
        // The rewrite ends in the same second, with the same size.
        const SystemFault fault(Fault::kFileEnds, 0);
        load("[S]\nA=1\n");
        EXPECT_EQ(put("2"), 0) << "it has not ended yet";
        EXPECT_EQ(errors.numbers(), "1512");
    }
    EXPECT_EQ(folder_.read("file.ini"), "[S]\nA=1\n");
    folder_.write("file.ini", "");
    inThePause = [&] { folder_.write("file.ini", "[S]\nB=1\n"); };
    EXPECT_EQ(put("2"), 1) << "it was empty for a moment";
    EXPECT_EQ(folder_.read("file.ini"), "[S]\nA=2\nB=1\n");
}

TEST_F(IniFileTest, NoEntryIsLostAmongProgramsAndThreads) {
    std::string old = "[S]\n";
    for (int i = 0; i < 250; ++i) {
        old += "Old" + std::to_string(i) + "=" + std::string(50, 'x') + "\n";
    }
    folder_.write("file.ini", old);
    const pid_t other = fork();
    const auto write = [&](const std::string& name) {
        KvIniFileCache cache;
        std::string done = cache.bosKvIniOpen(path_.c_str(), 0) == 0 ? "" : "not loaded";
        for (int i = 0, left = 100; left > 0; ++i) {
            const std::string entry = name + std::to_string(i);
            if (cache.bosPutProfileString("S", entry.c_str(), "1") == 1) {
                done += entry + "=1\n";
                --left;
            } else {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
        folder_.write(name, done);
    };
    {
        const std::jthread a(write, other == 0 ? "a" : "b");
        const std::jthread b(write, other == 0 ? "c" : "d");
    }
    if (other == 0) {
        _exit(0);
    }
    EXPECT_EQ(waitpid(other, nullptr, 0), other);
    const auto lines = [](const std::string& text) {
        std::istringstream stream(text);
        return std::multiset<std::string>(std::istream_iterator<std::string>(stream), {});
    };
    std::string expected = old;
    for (const char* name : {"a", "b", "c", "d"}) {
        expected += folder_.read(name);
    }
    EXPECT_EQ(lines(folder_.read("file.ini")), lines(expected));
}

TEST_F(IniFileTest, TheCopyOfTheOldTextIsNobodyElsesFile) {
    load("[S]\nA=1\n");
    Names taken{"file.ini~", "file.ini", "file.ini.~1~"};
    folder_.write("file.ini~", "an editor's");
    // The first of these names leads nowhere; from the second time on all are taken, and there is no copy.
    std::filesystem::create_symlink(folder_.path("absent"), folder_.path("file.ini.~1~"));
    EXPECT_EQ(put("2"), 1);
    EXPECT_EQ(files(), taken);
    for (int number = 2; number < 100; ++number) {
        taken.insert("file.ini.~" + std::to_string(number) + "~");
        folder_.write("file.ini.~" + std::to_string(number) + "~", "an editor's");
    }
    EXPECT_EQ(put("3"), 1);
    EXPECT_EQ(files(), taken);
    for (const char* name : {"file.ini~", "file.ini.~99~"}) {
        EXPECT_EQ(folder_.read(name), "an editor's");
        std::filesystem::remove(folder_.path(name));
    }

    std::filesystem::create_symlink(path_, folder_.path("link"));
    const std::string longPath = folder_.write(std::string(255, 'n'), "[S]\nA=1\n");
    const Names before = files();
    ErrorCollector errors;
    EXPECT_EQ(kvWritePrivateProfileString("S", "A", "4", folder_.path("link").c_str()), 1);
    EXPECT_EQ(kvWritePrivateProfileString("S", "A", "4", longPath.c_str()), 1) << "there is no room for the ~";
    EXPECT_EQ(errors.numbers(), "");
    EXPECT_TRUE(std::filesystem::is_symlink(folder_.path("link")));
    EXPECT_EQ(folder_.read("file.ini") + folder_.read(std::string(255, 'n')), "[S]\nA=4\n[S]\nA=4\n");
    EXPECT_EQ(files(), before);

    constexpr int kOpeningOfTheCopy = 7;  // after the file was opened and read
    for (const auto& [systemError, result] : {std::pair{EROFS, 1}, {EPERM, 1}, {ENOSPC, 0}}) {
        load("[S]\nA=1\n");
        const SystemFault fault(Fault::kActsAndFails, kOpeningOfTheCopy, systemError);
        EXPECT_EQ(put("2"), result) << "only what the folder refuses goes without a copy: " << systemError;
    }
}

// Killed at each step of an update, which leaves the copy of each moment.
TEST_F(IniFileTest, TheCopyLetsInNobodyWhomTheFileKeepsOut) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "Only root can give files away.";
    }
    // linux/posix_acl_xattr.h: the user 1234 may do nothing, all others may read.
    const auto entry = [](char tag, char permissions, const std::string& user = "\xFF\xFF\xFF\xFF") {
        return std::string{tag, 0, permissions, 0} + user;
    };
    const std::string accessList =
        "\2\0\0\0"s + entry(0x01, 6) + entry(0x02, 0, "\xD2\4\0\0"s) + entry(0x04, 4) + entry(0x10, 4) + entry(0x20, 4);
    const struct {
        const char* label;
        uid_t writer;
        mode_t file, copy;
        bool hasList = false;
        bool isLink = false;
    } rows[] = {{"as the file", 0, 0640, 0640},
                {"not in the file's group, which may less than others", kUser, 0604, 0600},
                {"a link", 0, 0644, 0600, false, true},
                {"a list", 0, 0644, 0600, true}};
    chmod(folder_.path().c_str(), 0777);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        mode_t widest = 0;
        int result = -1;
        for (int step = 0; result < 0; ++step) {
            load("[S]\nA=1\n");
            if (row.isLink) {
                std::filesystem::rename(path_, folder_.path("real"));
                std::filesystem::create_symlink(folder_.path("real"), path_);
            }
            ASSERT_EQ(chown(path_.c_str(), kUser, kGroup), 0);
            chmod(path_.c_str(), row.file);
            if (row.hasList &&
                setxattr(path_.c_str(), "system.posix_acl_access", accessList.data(), accessList.size(), 0) != 0) {
                GTEST_SKIP() << "no access control lists here";
            }
            result = runInChild([&] {
                const bool dropped = setuid(row.writer) == 0;
                const SystemFault fault(Fault::kKilled, step);
                return dropped && put("2") == 1 ? 0 : 1;
            });
            struct stat copy = {};
            if (stat(folder_.path("file.ini~").c_str(), &copy) == 0) {
                widest |= copy.st_mode & 0777;
                EXPECT_TRUE(copy.st_size == 0 || (copy.st_uid == kUser && (copy.st_gid == kGroup || row.writer != 0)));
            }
            std::filesystem::remove(folder_.path("file.ini~"));
            std::filesystem::remove(path_);
        }
        EXPECT_EQ(result, 0);
        EXPECT_EQ(widest, row.copy);
    }
}

TEST_F(IniFileTest, TheListSharesCachesByPath) {
    const ScopedEnvironment environment{
        {"HOME", folder_.path()}, {"ODBCINI", {}}, {"ODBC_INI", {}}, {"ODBCINST", path_}};
    const std::string path = folder_.write(".odbc.ini", "[S]\nA=1\n");
    KvIniFileCacheList list;
    KvIniFileCache* byName = list.open(".odbc.ini", 0);
    ASSERT_NE(byName, nullptr);
    EXPECT_EQ(list.open(path.c_str(), 0), byName);
    EXPECT_NE(list.open((folder_.path() + "//.odbc.ini").c_str(), 0), byName) << "paths compare byte for byte";
    list.close(byName);
    EXPECT_EQ(byName->incrementUseCount(), 2U);

    ErrorCollector errors;
    EXPECT_EQ(list.open(folder_.path("absent").c_str(), 0), nullptr);
    EXPECT_EQ(list.open(std::string(2000, 'x').c_str(), 0), nullptr);
    EXPECT_EQ(errors.numbers(), "1509w 30041");

    // A driver file that comes later, or comes back, is loaded.
    KvIniFileCache* early = list.open(path_.c_str(), 0);
    ASSERT_NE(early, nullptr);
    folder_.write("file.ini", "[D]\nN=1\n");
    EXPECT_EQ(list.open(path_.c_str(), 0), early);
    EXPECT_EQ(early->bosGetProfileInt("D", "N", 7), 1U);
    std::filesystem::remove(path_);
    std::filesystem::create_directory(path_);
    EXPECT_EQ(early->bosPutProfileString("D", "N", "3"), 0);
    EXPECT_EQ(errors.numbers(), "1509w 30041 30041");
    std::filesystem::remove(path_);
    folder_.write("file.ini", "[D]\nN=2\n");
    EXPECT_EQ(early->bosGetProfileInt("D", "N", 7), 2U);
}

}  // namespace

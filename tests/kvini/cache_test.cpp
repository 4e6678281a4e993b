#include "kvini/cache.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "bos/file.h"
#include "kvini/cache_list.h"
#include "kvini/profile.h"
#include "kvlib/debug_mask.h"
#include "kvlib/text.h"
#include "tests/support/child_process.h"
#include "tests/support/error_collector.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/system_fault.h"
#include "tests/support/temporary_folder.h"

using namespace std::string_literals;

namespace {

class IniFileTest : public testing::Test {
protected:
    // A cache of the folder's file with this text.
    void load(std::string_view text) {
        path_ = folder_.write("file.ini", text);
        ASSERT_EQ(cache_.bosKvIniOpen(path_.c_str(), 0), 0U);
    }

    std::string value(const char* section, const char* entry) {
        char buffer[4096];
        const unsigned long length = cache_.bosGetProfileString(section, entry, "(default)", buffer, sizeof buffer);
        return {buffer, length};
    }

    // Changes date and size beyond what one second and one byte could hide.
    void changeFile(std::string_view text) {
        folder_.write("file.ini", text);
        const timespec times[2] = {{1000, 0}, {++fakeTime_, 0}};
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
    std::string path_;
    KvIniFileCache cache_;
    time_t fakeTime_ = 1000;
};

constexpr const char* kDefault = "(default)";

TEST_F(IniFileTest, Lookups) {
    const std::string longName(300, 'n');
    const std::tuple<const char*, std::string, const char*, const char*, std::string> rows[] = {
        {"names without case, trailing blanks kept", "[ODBC]\ndir = /x  \n", "odbc", "Dir", "/x  "},
        {"many equal signs and blanks", "[S]\nA \t== =b=c\n", "S", "A", "b=c"},
        {"value of blanks is empty", "[S]\nA=  \nB=2\n", "S", "A", kDefault},
        {"no final line end", "[S]\nA=1", "S", "A", "1"},
        {"carriage return stays in the value", "[S]\r\nA=1\r\n", "S", "A", "1\r"},
        {"first of two sections", "[S]\nA=1\n[s]\nA=2\nB=3\n", "S", "B", kDefault},
        {"blanks inside a key", "[S]\n  my key  = x\n", "S", "my key", "x"},
        {"blanks of a section name count", "[S ]\nA=1\n[ S ]\nA=2\n[S]\nA=3\n", " s ", "A", "2"},
        {"comments, and their marks in a value", "[S]\n;A=1\n \t# A=2\nA=3;x\n", "S", "A", "3;x"},
        {"empty lines", "\n\n[S]\n\n\nA=1\n", "S", "A", "1"},
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
        {"line of an equal sign", "[S]\n=1\nA=2\n", "S", "A", "2"},
        {"zero bytes are characters", "[S]\nA=1\0x\nB=2\n"s, "S", "A", "1\0x"s},
        {"long names", "[" + longName + "]\n" + longName + "=1\n", longName.c_str(), longName.c_str(), "1"},
        {"names that begin alike", "[Section]\nKeys=1\nKey=2\n[Sec]\nKeys=4\nKey=3\n", "Sec", "Key", "3"},
        {"values end at 2,047 bytes", "[S]\nA=" + std::string(3000, 'v') + "\n", "S", "A", std::string(2047, 'v')},
        {"letters beyond ASCII match exactly", "[S]\n\xC4=1\n\xE4=2\n", "S", "\xE4", "2"},
    };
    for (const auto& [label, text, section, entry, expected] : rows) {
        SCOPED_TRACE(label);
        load(text);
        EXPECT_EQ(value(section, entry), expected);
    }
}

TEST_F(IniFileTest, SizesAtTheBoundary) {
    load("[S]\nA=abcdef\nE=\n");
    const struct {
        const char *label, *entry, *defaultText;
        unsigned long size, length, wideLength;
        std::string expected;
    } rows[] = {
        {"room", "A", "", 7, 6, 6, "abcdef"},
        {"exactly the size counts as cut", "A", "", 6, 6, 6, "abcde"},
        {"only the terminator", "A", "", 1, 1, 1, ""},
        {"no room at all", "A", "", 0, 0, 0, "untouched"},
        {"default whole", "E", "abc", 4, 3, 3, "abc"},
        {"default cut, which the wide form takes for a value", "E", "abc", 3, 2, 3, "ab"},
        {"null default", "X", nullptr, 9, 0, 0, ""},
        {"default without room", "X", "abc", 0, 0, 0, "untouched"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        char buffer[16] = "untouched";
        EXPECT_EQ(cache_.bosGetProfileString("S", row.entry, row.defaultText, buffer, row.size), row.length);
        EXPECT_EQ(buffer, row.expected);
        char16_t wide[16] = u"untouched";
        const std::u16string entry = toUtf16(row.entry, kCPUtf8);
        const std::u16string text = toUtf16(row.defaultText == nullptr ? "" : row.defaultText, kCPUtf8);
        EXPECT_EQ(cache_.bosGetProfileStringW(u"S", entry.c_str(), row.defaultText == nullptr ? nullptr : text.c_str(),
                                              wide, row.size),
                  row.wideLength);
        EXPECT_EQ(fromUtf16(wide, kCPUtf8), row.expected);
    }
}

TEST_F(IniFileTest, Lists) {
    const struct {
        const char* label;
        std::string text;
        const char* section;  // null: the sections
        unsigned long size;
        std::string expected;
    } rows[] = {
        {"keys", "[S]\nA=1\nB=2\n[T]\nC=3\n", "s", 99, "A\0B\0\0"s},
        {"blanks, left out only before the first key", "[S]\n  A =1\n  B=2\n", "S", 99, "A \0  B\0\0"s},
        {"comment behind a blank is a key", "[S]\n;x=1\nA=1\n#y\n ;z=1\n", "S", 99, "A\0 ;z\0\0"s},
        {"line without an equal sign runs on", "[S]\r\njunk\nA=1\r\n\r\nB=2\nrest", "S", 99, "junkA\0\rB\0rest\0"s},
        {"bracket in a value ends the list", "[S]\nA=x[\nB=2\n", "S", 99, "A\0\0"s},
        {"nothing but a comment", "[S]\n;x\n[T]\n", "S", 99, "\0"s},
        {"empty section", "[S]\n[T]\nA=1\n", "S", 99, "(d)"},
        {"empty section at the end", "[S]", "S", 99, "(d)"},
        {"missing section", "[S]\nA=1\n", "X", 99, "(d)"},
        {"exactly full", "[S]\nAb=1\nCd=2\n", "S", 7, "Ab\0Cd\0\0"s},
        {"cut in a key", "[S]\nAb=1\nCd=2\n", "S", 5, "Ab\0C\0"s},
        {"no bytes", "[S]\nAb=1\n", "S", 0, ""},
        {"sections", "[A]\nx=1\n;[B]\n[C D]\n[A]\n", nullptr, 99, "A\0C D\0A\0\0"s},
        {"sections, exactly full", "[A]\n[B]\n", nullptr, 5, "A\0B\0\0"s},
        {"sections, cut in a name", "[Ab]\n[Cd]\n", nullptr, 6, "Ab\0C\0\0"s},
        {"sections, cut behind a name", "[Ab]\n[Cd]\n", nullptr, 5, "Ab\0\0"s},
        {"no sections", "A=1\n", nullptr, 99, "\0"s},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        load(row.text);
        char buffer[100];
        std::fill_n(buffer, sizeof buffer, '#');
        const unsigned long length = cache_.bosGetProfileString(row.section, nullptr, "(d)", buffer, row.size);
        EXPECT_EQ(std::string(buffer, length), row.expected);
        EXPECT_EQ(buffer[row.size], '#');
        if (row.section != nullptr && row.expected != "(d)") {
            EXPECT_EQ(cache_.bosGetProfileSection(row.section, buffer, row.size), length);
        }
    }
    load("[S]\nAb=1\nCd=2\n");
    for (const auto& [size, expected] : {std::pair{7UL, u"Ab\0Cd\0\0"}, {6UL, u"Ab\0C\0\0"}}) {
        char16_t wide[8];
        EXPECT_EQ(cache_.bosGetProfileStringW(u"S", nullptr, nullptr, wide, size), size);
        EXPECT_EQ(std::u16string(wide, size), std::u16string(expected, size));
    }
}

TEST_F(IniFileTest, Integers) {
    const std::pair<const char*, std::uint32_t> rows[] = {
        {"12abc", 12}, {"-5", 7}, {"", 7}, {"4294967295", 4294967295U}, {"4294967296", 7}, {"0x10", 0}};
    for (const auto& [text, expected] : rows) {
        load(std::string("[S]\nN=") + text + "\n");
        EXPECT_EQ(cache_.bosGetProfileInt("S", "N", 7), expected) << text;
    }
    EXPECT_EQ(cache_.bosGetProfileInt("S", nullptr, 7), 7U);
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
        {"a key of two lines is one entry", "[S]\njunk\nA=1\n", "S", "junk\nA", nullptr, "[S]\n"},
        {"new entry comes first, header as the caller spells it", "[Sec]\nA=1\n", "sEC", "N", "x", "[sEC]\nN=x\nA=1\n"},
        {"new entry under a header without a line end", "[S]", "S", "N", "x", "[S]\nN=x\n"},
        {"one character behind the header is lost", "[S][T]\nA=1\n", "S", "N", "x", "[S]\nN=x\nT]\nA=1\n"},
        {"new section at the end", "[S]\nA=1\0x\n"s, "T", "N", "x", "[S]\nA=1\0x\n[T]\nN=x\n"s},
        {"which continues an open line", "[S]\nA=1", "T", "N", "x", "[S]\nA=1[T]\nN=x\n"},
        {"first section of an empty file", "", "T", "N", "x", "[T]\nN=x\n"},
        {"an entry goes, blanks before it stay", "[S]\n A=1\n[T]\nB=2\n", "S", "a", nullptr, "[S]\n [T]\nB=2\n"},
        {"delete a missing entry", "[S]\nA=1\n", "S", "X", nullptr, "[S]\nA=1\n"},
        {"delete an entry of a missing section", "[S]\nA=1\n", "T", "A", nullptr, "[S]\nA=1\n"},
        {"delete a section", ";x\n[S]\nA=1\n\n[T]\nB=2\n", "s", nullptr, nullptr, ";x\n[T]\nB=2\n"},
        {"up to a bracket in a value", "[S]\nA=x[y\nB=2\n", "S", nullptr, "x", "[y\nB=2\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        load(row.text);
        EXPECT_EQ(cache_.bosPutProfileString(row.section, row.entry, row.value), 1);
        EXPECT_EQ(folder_.read("file.ini"), row.expected);
    }
    EXPECT_EQ(cache_.bosPutProfileString(nullptr, "A", "1"), 0);
}

TEST_F(IniFileTest, ChangesByOthersAreSeen) {
    load("[S]\nA=1\n");
    changeFile("[S]\nA=22\n");
    EXPECT_EQ(value("S", "A"), "22");
    changeFile("[S]\nA=33\n");
    EXPECT_EQ(value("S", "A"), "33") << "same size, other date";
    --fakeTime_;
    changeFile("[S]\nA=44\n");
    EXPECT_EQ(value("S", "A"), "33") << "same size and date";
    changeFile("[T]\nB=1\n");
    EXPECT_EQ(cache_.bosPutProfileString("S", "A", "5"), 1);
    EXPECT_EQ(folder_.read("file.ini"), "[T]\nB=1\n[S]\nA=5\n") << "an update builds on what is there now";

    std::filesystem::remove(path_);
    EXPECT_EQ(cache_.proFileSync(), 1U);
    EXPECT_EQ(value("S", "A"), "(default)");
    EXPECT_EQ(cache_.bosPutProfileString("S", "A", "6"), 0);
    changeFile("[S]\nA=7\n");
    EXPECT_EQ(value("S", "A"), "7");
    cache_.Close();
    EXPECT_EQ(value("S", "A"), "(default)");
    EXPECT_EQ(cache_.bosPutProfileString("S", "A", "8"), 0);
}

TEST_F(IniFileTest, LoadingFallsBackToReading) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "Only root can give its rights away.";
    }
    const ScopedEnvironment environment{{"HOME", folder_.path()}, {"ODBCINST", {}}, {"ODBCINSTINI", {}}};
    const std::string file = folder_.write("file.ini", "[S]\nA=1\n");
    chmod(folder_.path().c_str(), 0755);
    const struct {
        const char* label;
        std::string name;
        mode_t mode;  // of the file, for a user who does not own it
        std::string errors, valueRead;
    } rows[] = {
        {"writable", file, 0666, "", "1"},
        {"readable only", file, 0644, "", "1"},
        {"neither", file, 0600, "1508w", ""},
        {"missing", folder_.path("absent"), 0644, "1509w", ""},
        {"a folder", folder_.path(), 0644, "30041w", ""},
        {"missing driver file is no failure", ".odbcinst.ini", 0644, "", ""},
    };
    for (const auto& row : rows) {
        chmod(file.c_str(), row.mode);
        for (const bool isListening : {true, false}) {
            EXPECT_EQ(runInChild([&] {
                          const auto errors = isListening ? std::make_unique<ErrorCollector>() : nullptr;
                          KvIniFileCache cache;
                          char text[8];
                          const bool dropped = setuid(65534) == 0;
                          const bool failed = cache.bosKvIniOpen(row.name.c_str(), 0) != 0;
                          const bool asTold =
                              failed != row.errors.empty() && (!errors || errors->numbers() == row.errors);
                          cache.bosGetProfileString("S", "A", "", text, sizeof text);
                          return dropped && asTold && text == row.valueRead ? 0 : 1;
                      }),
                      0)
                << row.label << (isListening ? "" : ", nobody listens");
        }
    }
    const ScopedEnvironment driver{{"ODBCINST", file + "/below"}};
    ErrorCollector errors;
    EXPECT_EQ(cache_.bosKvIniOpen(".odbcinst.ini", 0), 1U) << "only a missing driver file is forgiven";
    EXPECT_EQ(errors.numbers(), "30041");
}

// Each step of an update in turn meets the fault, until the update has no more steps.
TEST_F(IniFileTest, NoFaultInAnUpdateLosesTheOldText) {
    const std::string old = "[S]\nA=a value of some length\n";
    const std::string updated = "[S]\nA=another value, longer than the old one\n";
    for (const Fault kind : {Fault::kFailsWithoutMemory, Fault::kActsAndFails, Fault::kMemoryEnds,
                             Fault::kDescriptorIsClosed, Fault::kDiskIsGone, Fault::kKilled}) {
        const bool isOneFailure = kind != Fault::kDiskIsGone && kind != Fault::kKilled;
        int refused = 0;
        int lost = 0;
        bool happened = true;
        for (int step = 0; happened; ++step) {
            SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(kind) << ", step " << step);
            load(old);
            const int result = runInChild([&] {
                ErrorCollector errors;
                int told = 0;
                {
                    const SystemFault fault(kind, step);
                    const int written = cache_.bosPutProfileString("S", "A", "another value, longer than the old one");
                    // What is not written is told.
                    told = (written == 1 || KvErrorKeeper::getLastErrorNumber() != 0 ? written : 9) +
                           (fault.happened() ? 0 : 4);
                }
                // And the cache still knows the file.
                return told + (isOneFailure && this->value("S", "A") == kDefault ? 16 : 0);
            });
            happened = result != 5;
            EXPECT_TRUE(result == 0 || result == 1 || result == 5 || kind == Fault::kKilled) << result;
            refused += result == 0 ? 1 : 0;
            const std::string text = folder_.read("file.ini");
            EXPECT_TRUE(result < 1 || text == updated) << text;
            if (text != old && (result == 0 || (result < 0 && text != updated))) {
                ++lost;
                EXPECT_EQ(folder_.read("file.ini~"), old);
            }
            EXPECT_TRUE(files() == Names{"file.ini"} || result == 1 || !isOneFailure);
            std::filesystem::remove(folder_.path("file.ini~"));
        }
        // After one failure the old text is back. The copy is for worse: between the emptying and the last byte of a
        // rewrite that ends there, the file holds neither text.
        EXPECT_EQ(refused > 5, kind != Fault::kKilled);
        EXPECT_TRUE(isOneFailure ? lost == 0 : lost > 3) << lost;
    }
    const SystemFault none(Fault::kFails, 1000);
    EXPECT_EQ(cache_.bosPutProfileString("S", "A", "1"), 1);
    EXPECT_EQ(none.syncs, 3) << "the copy, its name and the file";
}

TEST_F(IniFileTest, AFileReadInTheMiddleOfARewriteIsReadAgain) {
    ErrorCollector errors;
    {
        // The rewrite ends in the same second, with the same size.
        const SystemFault fault(Fault::kFileEnds, 0);
        load("[S]\nA=1\n");
        EXPECT_EQ(cache_.bosPutProfileString("S", "A", "2"), 0) << "it has not ended yet";
        EXPECT_EQ(errors.numbers(), "1512");
    }
    EXPECT_EQ(folder_.read("file.ini"), "[S]\nA=1\n");
    EXPECT_EQ(cache_.bosPutProfileString("S", "B", "2"), 1);
    EXPECT_EQ(folder_.read("file.ini"), "[S]\nB=2\nA=1\n");
    folder_.write("file.ini", "");
    inThePause = [&] { folder_.write("file.ini", "[S]\nA=1\n"); };
    EXPECT_EQ(cache_.bosPutProfileString("S", "B", "2"), 1) << "it was empty for a moment";
    EXPECT_EQ(folder_.read("file.ini"), "[S]\nB=2\nA=1\n");
}

TEST_F(IniFileTest, OnlyWhatTheFolderRefusesGoesWithoutACopy) {
    constexpr int kOpeningOfTheCopy = 2;  // after two looks at the file
    const std::pair<int, int> rows[] = {{EROFS, 1}, {EPERM, 1}, {EMFILE, 0}, {EDQUOT, 0}, {ENOSPC, 0}};
    for (const auto& [systemError, result] : rows) {
        load("[S]\nA=1\n");
        ErrorCollector errors;
        const SystemFault fault(Fault::kFails, kOpeningOfTheCopy, systemError);
        EXPECT_EQ(cache_.bosPutProfileString("S", "A", "2"), result) << systemError;
        EXPECT_EQ(errors.numbers().empty(), result == 1) << systemError;
    }
}

TEST_F(IniFileTest, TheCopyOfTheOldTextIsNobodyElsesFile) {
    load("[S]\nA=1\n");
    Names taken{"file.ini~", "file.ini"};
    folder_.write("file.ini~", "an editor's");
    // The first of these names leads nowhere; from the second time on all are taken, and there is no copy.
    std::filesystem::create_symlink(folder_.path("absent"), folder_.path("file.ini.~1~"));
    taken.insert("file.ini.~1~");
    EXPECT_EQ(cache_.bosPutProfileString("S", "A", "2"), 1);
    EXPECT_EQ(files(), taken);
    for (int number = 2; number < 100; ++number) {
        const std::string name = "file.ini.~" + std::to_string(number) + "~";
        taken.insert(name);
        folder_.write(name, "an editor's");
    }
    EXPECT_EQ(cache_.bosPutProfileString("S", "A", "3"), 1);
    EXPECT_EQ(files(), taken);
    for (const char* name : {"file.ini~", "file.ini.~2~", "file.ini.~99~"}) {
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
}

// Killed at each step of an update, which leaves the copy of each moment.
TEST_F(IniFileTest, TheCopyLetsInNobodyWhomTheFileKeepsOut) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "Only root can give files away.";
    }
    constexpr uid_t kUser = 65534;
    constexpr gid_t kGroup = 65533;
    // linux/posix_acl_xattr.h: the user 1234 may do nothing, all others may read.
    struct {
        std::uint32_t version = 2;
        struct {
            std::uint16_t tag, permissions;
            std::uint32_t id;
        } entries[5] = {{0x01, 6, ~0U}, {0x02, 0, 1234}, {0x04, 4, ~0U}, {0x10, 4, ~0U}, {0x20, 4, ~0U}};
    } const accessList;
    const struct {
        const char* label;
        uid_t writer;
        mode_t file, copy;
        bool hasList = false;
        bool isLink = false;
    } rows[] = {{"as the file", 0, 0640, 0640},
                {"for all", 0, 0644, 0644},
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
                setxattr(path_.c_str(), "system.posix_acl_access", &accessList, sizeof accessList, 0) != 0) {
                GTEST_SKIP() << "no access control lists here";
            }
            result = runInChild([&] {
                const bool dropped = setuid(row.writer) == 0;
                const SystemFault fault(Fault::kKilled, step);
                return dropped && cache_.bosPutProfileString("S", "A", "2") == 1 ? 0 : 1;
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

TEST_F(IniFileTest, AnUpdateWorksAgainstALockAndFailsWhereItMayNotWrite) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "Only root can give its rights away.";
    }
    load("[S]\nA=1\n");
    {
        const StayingChild other([&] {
            std::string name = path_;
            name.resize(kPathSize);
            int descriptor = 0;
            return bosFileOpen(name.data(), OpenFlag::kReadWrite | OpenFlag::kExclusiveLock, &descriptor) == 0;
        });
        ASSERT_TRUE(other.worked());
        EXPECT_EQ(cache_.bosPutProfileString("S", "A", "2"), 1);
    }
    const struct {
        const char* label;
        mode_t folder, file;
        int result;
        const char* errors;
    } rows[] = {{"a copy alone", 0777, 0644, 0, "1508"}, {"the file alone", 0755, 0666, 1, ""}};
    for (const auto& row : rows) {
        chmod(folder_.path().c_str(), row.folder);
        chmod(path_.c_str(), row.file);
        EXPECT_EQ(runInChild([&] {
                      ErrorCollector errors;
                      return setuid(65534) == 0 && cache_.bosPutProfileString("S", "A", "3") == row.result &&
                                     errors.numbers() == row.errors
                                 ? 0
                                 : 1;
                  }),
                  0)
            << row.label;
        EXPECT_EQ(folder_.read("file.ini"), row.result == 0 ? "[S]\nA=2\n" : "[S]\nA=3\n") << row.label;
        EXPECT_EQ(files(), Names{"file.ini"}) << row.label;
    }
}

TEST_F(IniFileTest, TheListSharesCachesByPath) {
    const ScopedEnvironment environment{{"HOME", folder_.path()}, {"ODBCINI", {}}, {"ODBC_INI", {}}};
    const std::string path = folder_.write(".odbc.ini", "[S]\nA=1\n");
    KvIniFileCacheList list;
    KvIniFileCache* byName = list.open(".odbc.ini", 0);
    ASSERT_NE(byName, nullptr);
    EXPECT_EQ(list.open(path.c_str(), 0), byName);
    EXPECT_NE(list.open((folder_.path() + "//.odbc.ini").c_str(), 0), byName) << "paths compare byte for byte";
    list.close(byName);
    EXPECT_EQ(byName->incrementUseCount(), 2U);
    EXPECT_EQ(byName->decrementUseCount(), 1U);
    list.close(byName);
    list.close(nullptr);

    ErrorCollector errors;
    EXPECT_EQ(list.open("ODBC.INI", OpenFlag::kCreateMissing), nullptr);
    EXPECT_EQ(list.open(folder_.path("absent").c_str(), 0), nullptr);
    EXPECT_EQ(list.open(std::string(2000, 'x').c_str(), 0), nullptr);
    EXPECT_EQ(errors.numbers(), "1509 1509w 30041");
    EXPECT_EQ(folder_.read("ODBC.INI"), "(missing)");
    EXPECT_NE(list.open(folder_.path("new").c_str(), OpenFlag::kCreateMissing), nullptr);
    EXPECT_EQ(folder_.read("new"), "");
}

TEST_F(IniFileTest, AFileThatComesLaterOrComesBackIsLoaded) {
    const std::string path = folder_.path("drivers");
    const ScopedEnvironment environment{{"ODBCINST", path}};
    KvIniFileCacheList list;
    KvIniFileCache* early = list.open(path.c_str(), 0);
    ASSERT_NE(early, nullptr);
    EXPECT_EQ(early->bosGetProfileInt("D", "N", 7), 7U);
    folder_.write("drivers", "[D]\nN=1\n");
    EXPECT_EQ(list.open(path.c_str(), 0), early);
    EXPECT_EQ(early->bosGetProfileInt("D", "N", 7), 1U);

    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    EXPECT_EQ(early->bosGetProfileInt("D", "N", 7), 7U);
    ErrorCollector errors;
    EXPECT_EQ(early->bosPutProfileString("D", "N", "3"), 0);
    EXPECT_EQ(errors.numbers(), "30041");
    std::filesystem::remove(path);
    folder_.write("drivers", "[D]\nN=2\n");
    EXPECT_EQ(early->bosGetProfileInt("D", "N", 7), 2U);
    EXPECT_EQ(list.open(path.c_str(), 0), early);
}

TEST_F(IniFileTest, TheTraceTellsEachStep) {
    BOS_RUNTIME_DEBUG = DebugBit::kIniOpen | DebugBit::kIniRead | DebugBit::kIniWrite;
    testing::internal::CaptureStdout();
    load("[S]\nA=1\n");
    char buffer[16];
    cache_.bosGetProfileString("S", "A", "", buffer, sizeof buffer);
    cache_.bosGetProfileString("S", "X", nullptr, buffer, sizeof buffer);
    cache_.bosGetProfileSection("S", buffer, sizeof buffer);
    cache_.bosPutProfileString("S", nullptr, nullptr);
    BOS_RUNTIME_DEBUG = 0;
    const std::string f = "File:" + path_;
    const std::string get = "GetProfileString: ";
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "KvIniOpen: " + f + " \nKvIniOpen: " + f + " FileSize 8\n" +                                          //
                  get + f + " Section:[S] Entry:A\n" + get + "defaultStr:NULL\n" + get + "Section S found.\n" +     //
                  get + "Entry A found.\n" + get + "Value=1\n" + get + "Return Len=1 returnBuf=1\n" +               //
                  get + f + " Section:[S] Entry:X\n" + get + "Section S found.\n" + get + "Entry X not found.\n" +  //
                  get + "Return Len=0 returnBuf=\n" +                                                               //
                  "GetProfileSection: " + f + " Section:[S] GetProfileSection: Fecthing all entries for S\n" +
                  "GetProfileSection: Multi-Entry Output Requested.\nGetProfileSection: Entry A Len=1\n" +
                  "GetProfileSection: Return Len=3 returnBuf=A\n" +  //
                  "PutProfileString: " + f + " Section:[S] Entry:NULL\nPutProfileString: newStr:NULL\n" +
                  "PutProfileString: Deleting section S\nKvIniOpen: " + f + " \nKvIniOpen: " + f + " FileSize 0\n" +
                  "PutProfileString: Updated FileCache: Len=0\nPutProfileString: FileCache is empty.\n");
}

}  // namespace

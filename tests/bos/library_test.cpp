#include "bos/library.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <string>
#include <tuple>

#include "tests/support/child_process.h"
#include "tests/support/error_collector.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

namespace {

class LibraryTest : public testing::Test {
protected:
    std::string inFolder(const std::string& list) const {
        return std::regex_replace(list, std::regex("@"), folder_.path());
    }

    TemporaryFolder folder_;
    ScopedEnvironment environment_{{"HOME", {}},        {"KV", {}},  {"KVLIB", {}}, {"LD_LIBRARY_PATH", {}},
                                   {"LD_RUN_PATH", {}}, {"PATH", {}}};
};

TEST_F(LibraryTest, FilesAreLookedForAlongTheFlaggedDirectories) {
    constexpr std::uint32_t kLibraries = LocateFlag::kProduct | LocateFlag::kLibraries;
    for (const char* file : {"a/x", "b/two", "top", "c/lib/x"}) {
        folder_.write(file, "");
    }
    std::filesystem::create_directories(folder_.path("a/two"));
    const struct {
        const char *label, *variable, *value;
        std::uint32_t flags;
        std::string name;
        const char* expected;
    } rows[] = {
        {"a directory of that name is no hit", "PATH", "@/a:@/b", LocateFlag::kPath, "two", "@/b/two"},
        {"empty elements, and slashes at the end", "LD_LIBRARY_PATH", "::@/b/::", kLibraries, "two", "@/b/two"},
        {"parent of a library directory", "LD_LIBRARY_PATH", "@/c/lib", kLibraries, "../top", "@/c/lib/../../top"},
        {"parent only with the library flag", "PATH", "@/a", LocateFlag::kPath, "top", ""},
        {"KV too has its parent tried", "KV", "@/a", kLibraries, "top", "@/a/../top"},
        {"as given, without any flag", "PATH", "", 0, "@/b/two", "@/b/two"},
        {"too long for a path", "PATH", "@/b", LocateFlag::kPath, std::string(1200, '/') + "two", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const ScopedEnvironment variable{{row.variable, inFolder(row.value)}};
        char result[kPathSize] = "old";
        EXPECT_EQ(bosLocateFile(result, inFolder(row.name).c_str(), row.flags), *row.expected == '\0' ? 1U : 0U);
        EXPECT_EQ(std::string(result), inFolder(row.expected));
    }
    constexpr const char* kInOrder[] = {"HOME", "KV", "KVLIB", "LD_LIBRARY_PATH", "LD_RUN_PATH", "PATH"};
    for (const char* variable : kInOrder) {
        folder_.write(std::string(variable) + "/file", "");
        environment_.set(variable, folder_.path(variable));
    }
    for (const char* variable : kInOrder) {
        char result[kPathSize];
        EXPECT_EQ(bosLocateFile(result, "file", LocateFlag::kHome | kLibraries | LocateFlag::kPath), 0U);
        EXPECT_EQ(std::string(result), folder_.path(variable) + "/file");
        std::filesystem::remove(result);
    }
}

TEST_F(LibraryTest, KindsOfFiles) {
    using namespace FileKind;
    // Whoever may write else does not count for the owner, nor does the group for others.
    constexpr uid_t kStranger = 12345;
    const std::string file = folder_.write("file", "");
    for (const auto& [mode, owner, expected] :
         {std::tuple{0466U, getuid(), kRegular | kReadOnly}, {0620U, kStranger, kRegular | kReadOnly}}) {
        // Only root can give files away.
        if (owner == getuid() || getuid() == 0) {
            ASSERT_TRUE(chown(file.c_str(), owner, getgid()) == 0 && chmod(file.c_str(), mode) == 0);
            EXPECT_EQ(bosfattr(file.c_str()), expected) << std::oct << mode;
        }
    }
    ASSERT_EQ(mkfifo(folder_.path("fifo").c_str(), 0600), 0);
    for (const auto& [name, kind] :
         {std::pair{"@/fifo", kOther}, {"@", kDirectory}, {"@/absent", kMissing}, {"@/file/x", kUnreadable}}) {
        EXPECT_EQ(bosfattr(inFolder(name).c_str()), kind) << name;
    }
}

TEST_F(LibraryTest, LibrariesAreLoadedByTheirBareName) {
    std::filesystem::create_directories(folder_.path("b"));
    for (const char* name : {"b/vhtrc23.so", "b/odd.so.7"}) {
        std::filesystem::copy_file(BOS_TEST_LIBRARY, folder_.path(name));
    }
    folder_.write("b/broken.so", "no library");
    environment_.set("LD_LIBRARY_PATH", folder_.path("a") + ":" + folder_.path("b"));
    ErrorCollector errors;
    // A suffix in the middle is enough.
    for (const auto& [name, addVersion] : {std::pair{"vhtrc", 1}, {"vhtrc23  ", 0}, {"odd.so.7", 0}}) {
        void* handle = bosLoadLibrary(name, addVersion);
        ASSERT_NE(handle, nullptr) << name;
        EXPECT_EQ(reinterpret_cast<int (*)()>(dlsym(handle, "answer"))(), 42);
        dlclose(handle);
    }
    EXPECT_EQ(bosLoadLibrary("vhtrc", 0), nullptr);
    EXPECT_EQ(errors.numbers(), "") << "what is not found records nothing";
    EXPECT_EQ(bosLoadLibrary(u"broken", 0), nullptr);
    EXPECT_EQ(errors.numbers(), "1523");
    // The path, then the loader's words, which begin with it.
    EXPECT_NE(errors.lastText().find(inFolder("@/b/broken.so: @/b/broken.so")), std::string::npos) << errors.lastText();
    // A file of the current directory is what is loaded.
    EXPECT_EQ(runInChild([&] {
                  const bool moved = chdir(folder_.path("b").c_str()) == 0 && unsetenv("LD_LIBRARY_PATH") == 0;
                  return moved && bosLoadLibrary("vhtrc23.so", 0) != nullptr ? 0 : 1;
              }),
              0);
}

}  // namespace

#include "bos/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <tuple>

#include "bos/errno_mapping.h"
#include "kvlib/catalog.h"
#include "kvlib/text.h"
#include "tests/support/child_process.h"
#include "tests/support/error_collector.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace OpenFlag;

constexpr std::uint32_t kWriter = kReadWrite | kExclusiveLock;

std::ptrdiff_t openDescriptors() {
    const auto entries = std::filesystem::directory_iterator("/proc/self/fd");
    return std::distance(begin(entries), end(entries));
}

void limitDescriptors(rlim_t count) {
    const rlimit limit = {count, count};
    setrlimit(RLIMIT_NOFILE, &limit);
}

int openNamed(std::string path, std::uint32_t flags, int& descriptor) {
    path.resize(kPathSize);
    return bosFileOpen(path.data(), flags, &descriptor);
}

// Opens and closes again. The error numbers recorded, "" for success.
std::string tryOpen(const std::string& path, std::uint32_t flags) {
    ErrorCollector errors;
    int descriptor = -1;
    const std::ptrdiff_t before = openDescriptors();
    if (openNamed(path, flags, descriptor) == 0) {
        EXPECT_GT(descriptor, 0);
        EXPECT_EQ(bosFileClose(descriptor), 0);
        EXPECT_EQ(errors.numbers(), "");
    } else {
        EXPECT_EQ(descriptor, 0);
    }
    EXPECT_EQ(openDescriptors(), before);
    return errors.numbers();
}

class FileTest : public testing::Test {
protected:
    TemporaryFolder folder_;
};

TEST_F(FileTest, OpenFlagsCreateAndEmpty) {
    const std::tuple<const char*, bool, std::uint32_t, const char*, const char*> rows[] = {
        {"read/write does not create", false, kReadWrite, "1509", "(missing)"},
        {"create missing", false, kReadWrite | kCreateMissing, "", ""},
        {"create missing keeps an existing file", true, kReadWrite | kCreateMissing, "", "old"},
        {"create keeps the text", true, kCreate, "", "old"},
        {"create and empty", true, kCreate | kTruncate, "", ""},
        {"emptying needs create", true, kReadWrite | kTruncate, "", "old"},
        {"exclusive create", false, kCreate | kExclusive, "", ""},
        {"exclusive create of an existing file", true, kCreate | kExclusive, "1520", "old"},
    };
    for (const auto& [label, exists, flags, errors, textAfter] : rows) {
        SCOPED_TRACE(label);
        std::filesystem::remove(folder_.path("file"));
        if (exists) {
            folder_.write("file", "old");
        }
        EXPECT_EQ(tryOpen(folder_.path("file"), flags), errors);
        EXPECT_EQ(folder_.read("file"), textAfter);
    }
}

TEST_F(FileTest, LocksOfAnotherProcess) {
    const std::string path = folder_.write("file", "text");
    const struct {
        const char* label;
        std::uint32_t held, flags;
        const char *errors, *textAfter;
    } rows[] = {
        {"writer against writer", kWriter, kWriter, "1512", "text"},
        {"reader against writer", kWriter, kSharedLock, "1512", "text"},
        {"shared lock switched off", kWriter, kSharedLock | kNoSharedLock, "", "text"},
        {"exclusive lock needs read/write", kWriter, kExclusiveLock, "", "text"},
        {"no lock asked for", kWriter, kReadWrite, "", "text"},
        {"readers share", kSharedLock, kSharedLock, "", "text"},
        {"writer against reader", kSharedLock, kWriter, "1512", "text"},
        {"creating takes a shared lock", kCreate, kWriter, "1512", "text"},
        {"creating goes on without its lock", kWriter, kCreate | kTruncate, "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        folder_.write("file", "text");
        int descriptor = 0;
        const StayingChild other([&] { return openNamed(path, row.held, descriptor) == 0; });
        ASSERT_TRUE(other.worked());
        EXPECT_EQ(tryOpen(path, row.flags), row.errors);
        EXPECT_EQ(folder_.read("file"), row.textAfter);
    }
    const StayingChild other([&] {
        const int descriptor = open(path.c_str(), O_RDWR);
        return bosRegionLock(descriptor, RegionLock::kExclusive, 10, 5) == 0;
    });
    const int descriptor = open(path.c_str(), O_RDWR);
    EXPECT_EQ(bosRegionLock(descriptor, RegionLock::kShared, 14, 1), 1);
    EXPECT_EQ(bosRegionLock(descriptor, RegionLock::kShared, 15, 0), 0);
    EXPECT_EQ(bosRegionLock(descriptor, 7, 15, 0), 1);
    close(descriptor);
}

TEST_F(FileTest, FailuresOfTheSystemHaveTheLibrarysNumbers) {
    const std::string file = folder_.write("file", "");
    EXPECT_EQ(tryOpen(file + "/x", 0), "30041");
    EXPECT_EQ(runInChild([&] {
                  limitDescriptors(0);
                  ErrorCollector errors;
                  int descriptor = 0;
                  return openNamed(file, 0, descriptor) == 1 && errors.numbers() == "30045";
              }),
              1);
    ErrorCollector errors;
    const int full = open("/dev/full", O_RDWR);
    EXPECT_EQ(bosFileWrite(full, -1, "x", 1), 1);
    EXPECT_EQ(bosFileClose(full), 0);
    EXPECT_EQ(bosFileClose(full), 1);
    EXPECT_EQ(errors.numbers(), "1506 1507");
}

TEST_F(FileTest, ErrorsTellTheNameAndTheReason) {
    const std::tuple<const char*, int, const char*, const char*> rows[] = {
        {"%s (%s)", ENOENT, nullptr, "gone"},
        {"%s (%s)", EAGAIN, "/n", "busy"},
        {"%s (%s)", EIO, "/n", "bad: /n"},
        {"%s (%s)", ENOTDIR, "/%1%s", "bad: Not a directory (/%1%s)"},
        {"only %s", ENOTDIR, "/n", "bad: only Not a directory"},
        {"100%% %n%d %s %s %s %", ENOTDIR, "/n", "bad: 100% %n%d Not a directory /n %s %"},
    };
    for (const auto& [format, systemError, name, expected] : rows) {
        folder_.makeCatalog("locale/en_US/LC_MESSAGES/vhutl23.mo",
                            {{1509, "gone"}, {1512, "busy"}, {30041, "bad"}, {30050, format}});
        bosFreeResourceDLL(nullptr, nullptr);
        strCopy(InstallDirLocation, kInstallDirSize, folder_.path().c_str());
        ErrorCollector errors;
        bosMapError(systemError, name);
        EXPECT_EQ(errors.lastText(), expected) << format;
    }
    bosFreeResourceDLL(nullptr, nullptr);
    *InstallDirLocation = '\0';
}

TEST_F(FileTest, ADescriptorIsNeverZero) {
    const std::string path = folder_.write("file", "text");
    for (const std::uint32_t flags : {0U, std::uint32_t{kCreate}}) {
        EXPECT_EQ(runInChild([&] {
                      close(0);
                      int descriptor = 0;
                      const bool opened = openNamed(path, flags, descriptor) == 0;
                      return opened && descriptor > 0 && fcntl(0, F_GETFD) == -1 ? 0 : 1;
                  }),
                  0);
    }
    EXPECT_EQ(runInChild([&] {
                  close(0);
                  limitDescriptors(1);
                  int descriptor = 0;
                  return openNamed(path, kCreate | kTruncate, descriptor);
              }),
              1);
    EXPECT_EQ(folder_.read("file"), "text") << "a file is emptied only for who gets it";
}

TEST_F(FileTest, TemporaryFilesAndTheSearchPath) {
    const ScopedEnvironment environment{{"TMPDIR", {}}, {"KV_TMPDIR", folder_.path()}, {"PATH", folder_.path()}};
    for (const std::uint32_t flag : {kTemporary, kTemporaryToo}) {
        char name[kPathSize] = "ignored";
        int descriptor = 0;
        ASSERT_EQ(bosFileOpen(name, flag, &descriptor), 0);
        EXPECT_EQ(bosFileClose(descriptor), 0);
        EXPECT_EQ(std::string(name).rfind(folder_.path("kv"), 0), 0U) << name;
        EXPECT_EQ(bosexist(name), 1);
    }
    folder_.write("onpath", "");
    EXPECT_EQ(tryOpen("onpath", kSearchPath), "");
    EXPECT_EQ(tryOpen("onpath", 0), "1509");
    EXPECT_EQ(tryOpen("absent", kSearchPath), "1509");
}

}  // namespace

#include "bos/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

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

int openNamed(std::string path, std::uint32_t flags, int& descriptor) {
    path.resize(kPathSize);
    return bosFileOpen(path.data(), flags, &descriptor);
}

// Opens and closes again. The error numbers recorded, "" for success.
std::string tryOpen(const std::string& path, std::uint32_t flags) {
    ErrorCollector errors;
    int descriptor = -1;
    const int before = dup(2);
    close(before);
    const bool failed = openNamed(path, flags, descriptor) != 0;
    EXPECT_EQ(descriptor == 0, failed);
    EXPECT_TRUE(failed || (bosFileClose(descriptor) == 0 && errors.numbers().empty())) << errors.numbers();
    const int after = dup(2);
    EXPECT_EQ(after, before) << "no descriptor stays open";
    close(after);
    return errors.numbers();
}

class FileTest : public testing::Test {
protected:
    TemporaryFolder folder_;
};

TEST_F(FileTest, OpenFlagsCreateEmptyAndLock) {
    constexpr std::uint32_t kFree = ~0U;
    const struct {
        const char* label;
        std::uint32_t held, flags;  // by another process, and by us
        const char *errors, *textAfter;
        const char* textBefore = "text";  // null for no file
    } rows[] = {
        {"read/write does not create", kFree, kReadWrite, "1509", "(missing)", nullptr},
        {"create missing", kFree, kReadWrite | kCreateMissing, "", "", nullptr},
        {"create keeps the text", kFree, kCreate, "", "text"},
        {"create and empty", kFree, kCreate | kTruncate, "", ""},
        {"emptying needs create", kFree, kReadWrite | kTruncate, "", "text"},
        {"exclusive create of an existing file", kFree, kCreate | kExclusive, "1520", "text"},
        {"writer against writer", kWriter, kWriter, "1512", "text"},
        {"reader against writer", kWriter, kSharedLock, "1512", "text"},
        {"shared lock switched off", kWriter, kSharedLock | kNoSharedLock, "", "text"},
        {"exclusive lock needs read/write", kWriter, kExclusiveLock, "", "text"},
        {"creating takes a shared lock", kCreate, kWriter, "1512", "text"},
        {"creating goes on without its lock", kWriter, kCreate | kTruncate, "", ""},
        {"but not without an exclusive one", kCreate, kCreate | kTruncate | kWriter, "1512", "text"},
    };
    const std::string path = folder_.path("file");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        std::filesystem::remove(path);
        if (row.textBefore != nullptr) {
            folder_.write("file", row.textBefore);
        }
        int descriptor = 0;
        const StayingChild other([&] { return row.held == kFree || openNamed(path, row.held, descriptor) == 0; });
        ASSERT_TRUE(other.worked());
        EXPECT_EQ(tryOpen(path, row.flags), row.errors);
        EXPECT_EQ(folder_.read("file"), row.textAfter);
    }
    const StayingChild other(
        [&] { return bosRegionLock(open(path.c_str(), O_RDWR), RegionLock::kExclusive, 10, 5) == 0; });
    const int descriptor = open(path.c_str(), O_RDWR);
    EXPECT_EQ(bosRegionLock(descriptor, RegionLock::kShared, 14, 1), 1);
    EXPECT_EQ(bosRegionLock(descriptor, RegionLock::kShared, 15, 0), 0);
    close(descriptor);
}

TEST_F(FileTest, FailuresTellTheNameAndTheReason) {
    const struct {
        const char* format;
        int systemError;
        const char *name, *expected;
    } rows[] = {
        {"%s (%s)", ENOENT, nullptr, "gone"},
        {"%s (%s)", EAGAIN, "/n", "busy"},
        {"%s (%s)", EIO, "/n", "bad: /n"},
        {"100%% %n%d %s %s %s %", ENOTDIR, "/%1%s", "bad: 100% %n%d Not a directory /%1%s %s %"},
    };
    for (const auto& row : rows) {
        folder_.makeCatalog("locale/en_US/LC_MESSAGES/vhutl23.mo",
                            {{1509, "gone"}, {1512, "busy"}, {30041, "bad"}, {30050, row.format}});
        bosFreeResourceDLL(nullptr, nullptr);
        strCopy(InstallDirLocation, kInstallDirSize, folder_.path().c_str());
        ErrorCollector errors;
        bosMapError(row.systemError, row.name);
        EXPECT_EQ(errors.lastText(), row.expected) << row.format;
    }
    bosFreeResourceDLL(nullptr, nullptr);
    *InstallDirLocation = '\0';

    ErrorCollector errors;
    const int full = open("/dev/full", O_RDWR);
    EXPECT_EQ(bosFileWrite(full, -1, "x", 1), 1);
    EXPECT_EQ(bosFileClose(full), 0);
    EXPECT_EQ(bosFileClose(full), 1);
    EXPECT_EQ(errors.numbers(), "1506 1507");
}

TEST_F(FileTest, ADescriptorIsNeverZero) {
    const std::string path = folder_.write("file", "text");
    const auto openWithoutInput = [&path](rlim_t limit, std::uint32_t flags) {
        return runInChild([=] {
            const rlimit descriptors = {limit, limit};
            int descriptor = 0;
            close(0);
            setrlimit(RLIMIT_NOFILE, &descriptors);
            if (openNamed(path, flags, descriptor) != 0) {
                return 2;
            }
            return descriptor > 0 && fcntl(0, F_GETFD) == -1 ? 0 : 1;
        });
    };
    EXPECT_EQ(openWithoutInput(100, kCreate), 0);
    EXPECT_EQ(openWithoutInput(1, kCreate | kTruncate), 2);
    EXPECT_EQ(folder_.read("file"), "text") << "a file is emptied only for who gets it";
}

TEST_F(FileTest, TemporaryFilesAndTheSearchPath) {
    const ScopedEnvironment environment{{"TMPDIR", {}}, {"KV_TMPDIR", folder_.path()}, {"PATH", folder_.path()}};
    char name[kPathSize] = "ignored";
    int descriptor = 0;
    ASSERT_EQ(bosFileOpen(name, kTemporary, &descriptor), 0);
    EXPECT_EQ(bosFileClose(descriptor), 0);
    EXPECT_TRUE(std::string(name).starts_with(folder_.path("kv"))) << name;
    EXPECT_EQ(bosexist(name), 1);
    const std::string file = folder_.write("onpath", "");
    EXPECT_EQ(tryOpen("onpath", kSearchPath), "");
    EXPECT_EQ(tryOpen("onpath", 0), "1509");
    EXPECT_EQ(tryOpen(file + "/x", 0), "30041");
}

}  // namespace

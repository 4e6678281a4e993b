#include "motifutil/component_version.h"

#include <gtest/gtest.h>
#include <utime.h>

#include <array>
#include <csignal>
#include <string>

#include "kvlib/error_keeper.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

namespace {

TEST(ComponentVersionTest, ComponentsSayWhoTheyAreOrNothing) {
    const TemporaryFolder folder;
    const std::string broken = folder.write("broken.so", "no library");
    const std::array<std::string, 3> rows[] = {
        {VH_TEST_SETUP_COMPONENT, "Varnholt Technologies", "05.30.0002"},
        {VH_TEST_NO_COMPANY, "", "7.1"},
        {VH_TEST_EMPTY_COMPONENT, "", ""},  // a company and a version of nothing
        {"/no/such/library.so", "", ""},
        {broken, "", ""},
    };
    KvErrorList mine(nullptr, 0);
    KvErrorKeeper::setErrorList(&mine);
    for (auto [library, expectedCompany, expectedVersion] : rows) {
        char company[kComponentTextSize] = "before";
        char version[kComponentTextSize] = "before";
        getCompNameAndVersion(library.data(), company, version, 0);
        EXPECT_EQ(company, expectedCompany) << library;
        EXPECT_EQ(version, expectedVersion) << library;
    }
    EXPECT_EQ(mine.getErrorsMix(), 0);

    // Without anything to fill the list that was installed for the call stays, and outlives it.
    getCompNameAndVersion(std::string(broken).data(), nullptr, nullptr, 0);
    KvErrorList* left = KvErrorKeeper::giveUpErrorList();
    EXPECT_EQ(KvErrorKeeper::giveUpErrorList(), &mine);
    ASSERT_NE(left, &mine);
    delete left;
}

TEST(ComponentVersionTest, AComponentWithoutAVersionEndsTheProcess) {
    // Whoever reads the line has to know which file of that name it is about.
    std::string path = BOS_TEST_LIBRARY;
    const std::size_t slash = path.rfind('/');
    const ScopedEnvironment search{{"KVLIB", path.substr(0, slash)}};
    char version[kComponentTextSize];
    EXPECT_EXIT(getCompNameAndVersion(path.data() + slash + 1, nullptr, version, 0), testing::KilledBySignal(SIGSEGV),
                "^" + path + " has no function getFileVersionString");
}

TEST(ComponentVersionTest, AboutTellsFileDateAndSize) {
    const TemporaryFolder folder;
    const auto bytes = [](std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); };
    std::string path = folder.write("component", std::string(2047, 'x'));
    std::string missing = folder.path("missing");
    const utimbuf date{1767614400, 1767614400};  // 2026-01-05 12:00 UTC
    utime(path.c_str(), &date);
    EXPECT_EQ(setAboutInfo(bytes(path)), 0);
    EXPECT_EQ(fileName, path);
    EXPECT_STREQ(fileSize, "1 kb");
    EXPECT_STREQ(fileDate, "01/05/26");
    EXPECT_STREQ(FileVersion, "");
    EXPECT_STRNE(compAddr1, "");
    EXPECT_EQ(setAboutInfo(bytes(missing)), 1);
    EXPECT_STREQ(fileSize, "1 kb");
    EXPECT_STREQ(fileDate, "");
}

}  // namespace

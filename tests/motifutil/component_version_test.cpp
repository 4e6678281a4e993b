#include "motifutil/component_version.h"

#include <gtest/gtest.h>
#include <utime.h>

#include <csignal>
#include <cstring>
#include <string>

#include "kvlib/error_list.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

using namespace std::string_literals;

namespace {

const unsigned char* bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.c_str());
}

TEST(ComponentVersionTest, ComponentsSayWhoTheyAreOrNothing) {
    const TemporaryFolder folder;
    const std::string broken = folder.write("broken.so", "no library");
    const struct {
        const char *about, *library, *company, *version;
    } kCases[] = {
        {"all functions", VH_TEST_SETUP_COMPONENT, "Varnholt Technologies", "05.30.0002"},
        {"no company", VH_TEST_NO_COMPANY, "", "7.1"},
        {"a company and a version of nothing", VH_TEST_EMPTY_COMPONENT, "", ""},
        {"not there", "/no/such/library.so", "", ""},
        {"not a library", broken.c_str(), "", ""},
    };
    KvErrorList mine(nullptr, 0);
    KvErrorKeeper::setErrorList(&mine);
    for (const auto& test : kCases) {
        char company[kComponentTextSize] = "before";
        char version[kComponentTextSize] = "before";
        getCompNameAndVersion(test.library, company, version, 0);
        EXPECT_STREQ(company, test.company) << test.about;
        EXPECT_STREQ(version, test.version) << test.about;
        EXPECT_EQ(KvErrorKeeper::currentList(), &mine) << test.about;
    }
    EXPECT_EQ(mine.getErrorsMix(), 0);

    // Without anything to fill the list that was installed for the call stays, and outlives it.
    getCompNameAndVersion("/no/such/library.so", nullptr, nullptr, 0);
    KvErrorList* left = KvErrorKeeper::currentList();
    ASSERT_NE(left, &mine);
    addError(1, "still usable");
    EXPECT_STREQ(left->getLastError()->getErrorText(), "still usable");
    EXPECT_EQ(KvErrorKeeper::giveUpErrorList(), left);
    delete left;
    EXPECT_EQ(KvErrorKeeper::giveUpErrorList(), &mine);
}

TEST(ComponentVersionTest, AComponentWithoutAVersionEndsTheProcess) {
    char company[kComponentTextSize];
    char version[kComponentTextSize];
    // Whoever reads the line has to know which file of that name it is about.
    const std::string path = BOS_TEST_LIBRARY;
    const std::size_t slash = path.rfind('/');
    const ScopedEnvironment search{{"KVLIB", path.substr(0, slash)}};
    EXPECT_EXIT(getCompNameAndVersion(path.c_str() + slash + 1, company, version, 0), testing::KilledBySignal(SIGSEGV),
                "^" + path + " has no function getFileVersionString");
}

TEST(ComponentVersionTest, AboutTellsFileDateAndSize) {
    const TemporaryFolder folder;
    const auto file = [&folder](std::size_t size) {
        const std::string path = folder.write("component", std::string(size, 'x'));
        const utimbuf date{1767614400, 1767614400};  // 2026-01-05 12:00 UTC
        utime(path.c_str(), &date);
        return path;
    };
    EXPECT_EQ(setAboutInfo(bytes(file(1500))), 0);
    EXPECT_EQ(fileName + " "s + fileSize + " " + fileDate, folder.path("component") + " 1 kb 01/05/26");
    EXPECT_STREQ(FileVersion, "");
    EXPECT_STRNE(compAddr1, "");
    EXPECT_EQ(setAboutInfo(bytes(file(1000))), 0);
    EXPECT_STREQ(fileSize, "0 kb");
    std::strcpy(fileSize, "5 kb");
    EXPECT_EQ(setAboutInfo(bytes(folder.path("missing"))), 1);
    EXPECT_EQ(fileSize + "|"s + fileDate, "5 kb|");
}

}  // namespace

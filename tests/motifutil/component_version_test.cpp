#include "motifutil/component_version.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include "kvlib/error_keeper.h"
#include "motifutil/component_inquiry.h"
#include "tests/support/child_process.h"
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

// The libraries' versions, one behind the other, and what is complained of.
std::pair<std::string, std::string> inquire(const std::vector<std::string>& libraries) {
    std::string versions;
    testing::internal::CaptureStderr();
    for (const ComponentAnswer& answer : askComponents(libraries)) {
        versions += "|" + answer.version;
    }
    return {versions, testing::internal::GetCapturedStderr()};
}

TEST(ComponentInquiryTest, NothingThatALibraryDoesKeepsTheOthersFromAnswering) {
    const TemporaryFolder folder;
    std::filesystem::copy_file(VH_TEST_BAD_COMPONENT, folder.path("good.so"));
    const std::string whole = folder.read("good.so");
    folder.write("cut.so", whole.substr(0, 3000));
    folder.write("foreign.so", std::string(whole).replace(18, 2, "\x16\x01"));  // another machine in the ELF header
    ASSERT_EQ(mkfifo(folder.path("pipe.so").c_str(), 0600), 0);
    const std::pair<std::string, std::string> cases[] = {
        {"sleeps.so", "2 seconds"}, {"hangs.so", "2 seconds"}, {"good.so", ""},
        {"prints.so", "Hello"},     {"exits.so", "ended"},     {"aborts.so", "Aborted"},
        {"crashes.so", "Segment"},  {"cut.so", "cut.so"},      {"foreign.so", "foreign.so"},
        {"pipe.so", "no such"},     {"none.so", "no such"},    {BOS_TEST_LIBRARY, "has no function"}};
    std::vector<std::string> libraries;
    for (const auto& [name, complaint] : cases) {
        libraries.push_back(name[0] == '/' ? name : folder.path(name));
        if (complaint != "no such") {
            std::filesystem::copy_file(VH_TEST_BAD_COMPONENT, libraries.back(),
                                       std::filesystem::copy_options::skip_existing);
        }
    }
    libraries.push_back(folder.path("good.so"));
    const auto begin = std::chrono::steady_clock::now();
    const auto [versions, complaints] = inquire(libraries);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));
    EXPECT_EQ(versions, "|||9|9|||||||||9");
    EXPECT_EQ(std::count(complaints.begin(), complaints.end(), '\n'), 11) << complaints;
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const std::size_t line = complaints.find(libraries[i]);
        const bool isTold = complaints.find(cases[i].second, line) < complaints.find('\n', line);
        EXPECT_EQ(isTold, !cases[i].second.empty()) << libraries[i];
    }
    // A file that is asked already is asked again when it is another one.
    EXPECT_EQ(inquire(libraries), (std::pair<std::string, std::string>(versions, "")));
    std::filesystem::copy_file(VH_TEST_NO_COMPANY, folder.path("new"));
    std::filesystem::rename(folder.path("new"), folder.path("good.so"));
    EXPECT_EQ(inquire({libraries[2]}).first, "|7.1");
}

TEST(ComponentInquiryTest, AnAnswerIsKeptUntilOneOfItsFilesChanges) {
    const TemporaryFolder folder;
    const std::string library = folder.path("lib.so");
    const ScopedEnvironment environment{{"XDG_CACHE_HOME", folder.path("cache")}, {"KVLIB", folder.path("drivers")}};
    // In a run of its own, where the library would tell this version now.
    const auto ask = [&library](const char* version) {
        return runInChild([&library, version] {
            keepAnswers();
            setenv("VH_TEST_VERSION", version, 1);
            return std::atoi(askComponents({library})[0].version.c_str());
        });
    };
    std::filesystem::copy_file(VH_TEST_BAD_COMPONENT, library);
    EXPECT_EQ(ask("1"), 1);
    EXPECT_EQ(ask("2"), 2) << "the file may change once more within one step of the clock";
    std::filesystem::remove(library);
    std::filesystem::create_symlink(VH_TEST_BAD_COMPONENT, library);
    // Nobody waits for the writing, and a busy machine may be too slow for anything to be kept.
    for (int tries = 0; tries < 50 && folder.read("cache/varnholt-odbcadmin/components") == "(missing)"; ++tries) {
        EXPECT_EQ(ask("3"), 3);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_EQ(ask("4"), 3);
    std::filesystem::create_directory(folder.path("drivers"));
    EXPECT_EQ(ask("5"), 5) << "what it needs may be found elsewhere";
    std::filesystem::remove(folder.path("drivers"));
    EXPECT_EQ(ask("6"), 3);
    std::filesystem::copy_file(VH_TEST_BAD_COMPONENT, folder.path("new"));
    std::filesystem::rename(folder.path("new"), library);
    EXPECT_EQ(ask("7"), 7);
    // Whoever looks again is told again.
    const std::string printing = folder.path("prints.so");
    std::filesystem::create_symlink(VH_TEST_BAD_COMPONENT, printing);
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(runInChild([&] { return keepAnswers(), inquire({printing}).second.empty() ? 1 : 0; }), 0);
    }
}

TEST(ComponentInquiryTest, DriversOfDebianTellTheirVersionsByTheirOdbcFunctions) {
    // Ours stand in for some of them, found before the driver that they answer for.
    const ScopedEnvironment search{{"KVLIB", VH_TEST_STAND_INS ":/usr/lib/" VH_TEST_TRIPLET "/odbc"}};
    EXPECT_EQ(
        inquire({"libmaodbc.so", "libsqlite3odbc.so", "libtdsodbc.so", "psqlodbca.so", "psqlodbcw.so", "libmdbodbc.so",
                 "libmdbodbcW.so"}),
        (std::pair<std::string, std::string>("|03.01.0015|0.9998|01.03.0017|13.02.0000|13.02.0000|1.0.0|1.0.0", "")));
    EXPECT_TRUE(askComponents({"libsqlite3odbc.so"})[0].isSetupLibrary);
    EXPECT_NE(inquire({"libsqliteodbc.so"}).second.find("so: libsqliteodbc.so: cannot open"), std::string::npos)
        << "it is not there";
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

#include "kvini/profile.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "kvini/kv_ini.h"
#include "tests/support/error_collector.h"
#include "tests/support/system_fault.h"
#include "tests/support/temporary_folder.h"

using namespace std::string_literals;

namespace {

class ProfileTest : public testing::Test {
protected:
    TemporaryFolder folder_;
    const std::string absent_ = folder_.path("absent.ini");
    const std::string below_ = folder_.write("plain", "") + "/x.ini";  // can't be created
    char buffer_[64] = "untouched";
};

constexpr int kThreads = 8;

void inThreads(const std::function<void(int)>& work) {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back(work, thread);
    }
}

TEST_F(ProfileTest, AMissingFileGivesTheDefaultUntilItIsWritten) {
    const char* file = absent_.c_str();
    const std::u16string wideFile(absent_.begin(), absent_.end());
    char16_t wide[4];
    EXPECT_EQ(kvGetProfileString("S", "A", "abcdef", buffer_, 4, file), 3U);
    EXPECT_STREQ(buffer_, "abc");
    EXPECT_EQ(kvGetPrivateProfileInt("S", "A", 7, file), 7U);
    EXPECT_EQ(kvGetPrivateProfileSection("S", buffer_, 4, file), 0U);
    EXPECT_EQ(kvGetPrivateProfileStringW(u"S", u"A", u"abcdef", wide, 4, wideFile.c_str()), 3U);
    EXPECT_EQ(folder_.read("absent.ini"), "(missing)");

    EXPECT_EQ(kvWriteProfileString("S", "A", "1", file), 1);
    EXPECT_EQ(kvWritePrivateProfileString("S", "A", nullptr, file), 1);
    EXPECT_EQ(folder_.read("absent.ini"), "[S]\n");
    EXPECT_EQ(kvWritePrivateProfileStringW(u"S", u"B", u"22", wideFile.c_str()), 1);
    EXPECT_EQ(kvGetPrivateProfileIntW(u"S", u"B", 7, wideFile.c_str()), kvGetProfileInt("S", "B", 0, file));
    EXPECT_EQ(kvGetPrivateProfileStringW(u"S", u"B", nullptr, wide, 4, wideFile.c_str()), 2U);
    EXPECT_EQ(std::u16string(wide), u"22");
    folder_.write("absent.ini", "[S]\nB=333\n");
    EXPECT_EQ(kvGetProfileString("S", "B", "", buffer_, sizeof buffer_, file), 3U) << "a held cache follows the file";
    EXPECT_STREQ(buffer_, "333");
    std::filesystem::remove(absent_);
    EXPECT_EQ(kvWriteProfileString("S", "A", "1", file), 1) << "gone while it was held";
    EXPECT_EQ(folder_.read("absent.ini"), "[S]\nA=1\n");
}

TEST_F(ProfileTest, WritersSayWhyTheyCouldNot) {
    ErrorCollector errors;
    EXPECT_EQ(kvWriteProfileString("S", "A", "1", below_.c_str()), 0);
    EXPECT_EQ(kvWritePrivateProfileString("S", "A", "1", static_cast<KvIniFileCache*>(nullptr)), 0);
    EXPECT_EQ(kvProfileInit(below_.c_str()), nullptr);
    EXPECT_EQ(errors.numbers(), "30041w 30041w");
    // The emulation has results of its own.
    EXPECT_EQ(WritePrivateProfileString("S", "A", "1", below_.c_str()), 1);
    EXPECT_EQ(GetPrivateProfileString("S", "A", "x", buffer_, sizeof buffer_, absent_.c_str()), 1U);
    EXPECT_STREQ(buffer_, "untouched");
    EXPECT_EQ(WritePrivateProfileString("S", "A", "123", absent_.c_str()), 1);
    EXPECT_EQ(GetPrivateProfileString("S", "A", "x", buffer_, sizeof buffer_, absent_.c_str()), 3U);
    EXPECT_STREQ(buffer_, "123");
}

TEST_F(ProfileTest, AnUpdateKeepsNobodyFromAnotherFile) {
    const std::string empty = folder_.write("empty.ini", "");  // read twice, with a pause between
    const std::string other = folder_.write("other.ini", "[S]\nA=5\n");
    const auto read = [](const std::string& file) { return kvGetPrivateProfileInt("S", "A", 7, file.c_str()); };
    std::future<std::uint32_t> ofEmpty, ofOther;
    inThePause = [&] {
        ofEmpty = std::async(std::launch::async, read, empty);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        ofOther = std::async(std::launch::async, read, other);
        EXPECT_EQ(ofOther.wait_for(std::chrono::seconds(5)), std::future_status::ready);
    };
    EXPECT_EQ(kvWriteProfileString("S", "A", "1", empty.c_str()), 1);
    EXPECT_EQ(ofOther.get() + ofEmpty.get(), 6U);
}

TEST_F(ProfileTest, KvIniHoldsAFile) {
    KvIni ini;
    std::int16_t number = 0;
    ErrorCollector errors;
    EXPECT_EQ(ini.open(below_.c_str()), 1);
    EXPECT_EQ(ini.getEntry("S", "Last", number, 7), 1);
    EXPECT_EQ(ini.deleteEntry("S", "Big"), 0);
    EXPECT_EQ(errors.numbers(), "30041w 1507 1507");

    const std::string file = folder_.write("a.ini", "[S]\nBig=32768\nText = two  words\n;x=1\nLast=9\n");
    ASSERT_EQ(ini.open(file.c_str()), 0);
    EXPECT_EQ(ini.getEntryWithLen("S", "text", buffer_, sizeof buffer_, ""), 10U);
    EXPECT_EQ(ini.getEntry("S", "Last", number, 7), 0);
    EXPECT_EQ(number, 9);
    ini.getEntry("S", "Big", number, 7);
    EXPECT_EQ(number, 7);
    const std::string whole = "Big=32768\0Text=two  words\0Last=9\0\0"s;
    EXPECT_EQ(KvIni::getSectionWithValues("S", buffer_, sizeof buffer_, file.c_str()), whole.size());
    EXPECT_EQ(std::string(buffer_, whole.size()), whole);
    EXPECT_EQ(KvIni::getSectionWithValues("S", buffer_, whole.size() - 1, file.c_str()), whole.size() - 7);
    EXPECT_EQ(ini.deleteEntry("S", "Big"), 1);
}

TEST_F(ProfileTest, ThreadsThatComeAndGoReadAndWriteOneFile) {
    const std::string held = folder_.write("held.ini", "");
    const std::string passing = folder_.write("passing.ini", "");  // which nobody holds for long
    std::atomic<int> wrong = 0;
    // All of a thread's life. Every second one has nobody to tell its errors.
    const auto visit = [&](const std::string& key, std::uint32_t round) {
        const auto errors = round % 2 == 0 ? std::make_unique<ErrorCollector>() : nullptr;
        const std::string value = std::to_string(round);
        bool good = kvGetProfileInt("S", key.c_str(), 0, held.c_str()) == round - 1;
        for (const std::string& file : {held, passing}) {
            good = good && kvWritePrivateProfileString("S", key.c_str(), value.c_str(), file.c_str()) == 1 &&
                   kvGetPrivateProfileInt("S", key.c_str(), 0, file.c_str()) == round;
        }
        good = good && kvGetPrivateProfileInt("S", "A", 7, absent_.c_str()) == 7;
        wrong += good && (!errors || errors->numbers() == "1509w") ? 0 : 1;
    };
    inThreads([&](int worker) {
        for (std::uint32_t round = 1; round <= 20; ++round) {
            std::thread(visit, "Key" + std::to_string(worker), round).join();
        }
    });
    EXPECT_EQ(wrong, 0);
}

}  // namespace

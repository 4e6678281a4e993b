#include "kvlib/per_thread_data.h"

#include <gtest/gtest.h>

#include <functional>
#include <mutex>
#include <thread>

#include "kvlib/critical_section.h"

namespace {

std::size_t records() {
    std::size_t count = 0;
    auto* record = static_cast<KvThreadInfo*>(mdsGetPerTaskData(kTaskSlotThreadRecords));
    for (; record != nullptr; record = record->next) {
        ++count;
    }
    return count;
}

TEST(PerThreadData, CountsUsesAndClearsSlots) {
    std::thread([] {
        int value = 0;
        mdsPerThreadTerm();
        mdsSetPerThreadData(1, &value);
        EXPECT_EQ(mdsGetPerThreadData(1), nullptr) << "no record yet";
        ASSERT_EQ(mdsPerThreadInit(), 1);
        ASSERT_EQ(mdsPerThreadInit(), 1);
        mdsSetPerThreadData(1, &value);
        mdsPerThreadTerm();
        EXPECT_EQ(mdsGetPerThreadData(1), &value) << "one use is left";
        mdsPerThreadTerm();
        EXPECT_EQ(mdsGetPerThreadData(1), nullptr);
        ASSERT_EQ(mdsPerThreadInit(), 1);
        EXPECT_EQ(mdsGetPerThreadData(1), nullptr) << "a reused record is empty";
        EXPECT_EQ(mdsGetPerThreadDataAddress(kPerThreadSlots), nullptr);
        mdsPerThreadTerm();
    }).join();
}

TEST(PerThreadData, ThreadsHaveRecordsOfTheirOwnThatAreUsedAgain) {
    const auto visit = [](const std::function<void()>& meanwhile) {
        std::thread([&meanwhile] {
            mdsPerThreadInit();
            mdsSetPerThreadData(1, &mdsGetPerThreadDataAddress(0)[2]);
            meanwhile();
            EXPECT_EQ(mdsGetPerThreadData(1), &mdsGetPerThreadDataAddress(0)[2]);
            mdsPerThreadTerm();
        }).join();
    };
    const std::size_t before = records();
    for (int i = 0; i < 10; i++) {
        visit([&] { visit([&] { visit([] {}); }); });
    }
    // The last record is not used again while it is the last.
    EXPECT_LE(records(), before + 4);
}

TEST(CriticalSection, IsRecursiveExclusiveAndCanBeSwitchedOff) {
    KvCriticalSection section;
    KvSemaphore semaphore;
    int guarded = 0;
    auto count = [&] {
        for (int i = 0; i < 5000; i++) {
            std::lock_guard outer(section);
            std::lock_guard inner(section);
            std::lock_guard sole(semaphore);
            guarded++;
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_EQ(guarded, 10000);

    section.setLocking(false);
    section.lock();
    bool passed = false;
    std::thread([&] {
        std::lock_guard guard(section);
        passed = true;
    }).join();
    EXPECT_TRUE(passed);
    section.unlock();
}

}  // namespace

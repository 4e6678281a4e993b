#include "kvlib/per_thread_data.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

#include "kvlib/critical_section.h"

namespace {

std::vector<KvThreadInfo*> records() {
    std::vector<KvThreadInfo*> result;
    auto* record = static_cast<KvThreadInfo*>(mdsGetPerTaskData(kTaskSlotThreadRecords));
    for (; record != nullptr; record = record->next) {
        result.push_back(record);
    }
    return result;
}

// The slots that a new thread is given; it leaves again.
void** visit() {
    void** slots = nullptr;
    std::thread([&slots] {
        mdsPerThreadInit();
        slots = mdsGetPerThreadDataAddress(0);
        mdsPerThreadTerm();
    }).join();
    return slots;
}

TEST(PerThreadData, CountsUsesAndClearsSlots) {
    std::thread([] {
        int value = 0;
        mdsPerThreadTerm();
        mdsSetPerThreadData(1, &value);
        EXPECT_EQ(mdsGetPerThreadData(1), nullptr) << "no record yet";
        ASSERT_TRUE(mdsPerThreadInit() == 1 && mdsPerThreadInit() == 1);
        mdsSetPerThreadData(1, &value);
        mdsPerThreadTerm();
        EXPECT_EQ(mdsGetPerThreadData(1), &value) << "one use is left";
        mdsPerThreadTerm();
        ASSERT_EQ(mdsPerThreadInit(), 1);
        EXPECT_EQ(mdsGetPerThreadData(1), nullptr) << "a reused record is empty";
        mdsPerThreadTerm();
    }).join();
}

TEST(PerThreadData, ReusesFreeRecordsExceptTheLast) {
    // All but three are in use by nobody who comes back.
    std::vector<KvThreadInfo*> occupied;
    for (int i = 0; i < 3; i++) {
        visit();
        for (KvThreadInfo* record : records()) {
            if (record->useCount == 0) {
                record->useCount = 1;
                record->threadId = 0;
                occupied.push_back(record);
            }
        }
    }
    const std::size_t count = records().size();
    // A new record is hung on, and another while only the last one is free; then the first is in the middle.
    void** const first = visit();
    EXPECT_EQ(first, records().back()->slots);
    EXPECT_NE(visit(), first);
    EXPECT_EQ(visit(), first);
    // Of several the first one is taken, the head as well.
    for (KvThreadInfo* freed : {records()[count - 1], records()[1], records()[0]}) {
        freed->useCount = 0;
        EXPECT_EQ(visit(), freed->slots);
    }
    EXPECT_EQ(records().size(), count + 2);
    for (KvThreadInfo* record : occupied) {
        record->useCount = 0;
    }
}

TEST(CriticalSection, IsRecursiveExclusiveAndCanBeSwitchedOff) {
    KvCriticalSection section;
    int guarded = 0;
    const auto count = [&] {
        for (int i = 0; i < 5000; i++) {
            const std::lock_guard outer(section);
            const std::lock_guard inner(section);
            guarded++;
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_EQ(guarded, 10000);
    section.setLocking(false);
    section.lock();
    std::thread(count).join();
}

}  // namespace

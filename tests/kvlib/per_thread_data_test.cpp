#include "kvlib/per_thread_data.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

std::vector<KvThreadInfo*> records() {
    std::vector<KvThreadInfo*> result;
    auto* record = static_cast<KvThreadInfo*>(mdsGetPerTaskData(kTaskSlotThreadRecords));
    for (; record != nullptr; record = record->next) {
        result.push_back(record);
    }
    return result;
}

void visit() {
    std::thread([] {
        mdsPerThreadInit();
        mdsPerThreadTerm();
    }).join();
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

TEST(PerThreadData, ReusesFreeRecords) {
    visit();
    const std::size_t count = records().size();
    for (int i = 0; i < 20; i++) {
        visit();
    }
    EXPECT_LE(records().size(), count + 1) << "the last one is left alone";
}

}  // namespace

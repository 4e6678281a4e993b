#include "kvlib/kv_array.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/support/error_collector.h"

namespace {

// An element with a key, a name to tell equal ones apart, and a count of those alive.
struct Item : KvObject {
    Item(int itemKey, char itemName) : key(itemKey), name(itemName) { alive++; }
    ~Item() override { alive--; }
    std::int16_t compare(const KvObject* other) const override {
        return static_cast<std::int16_t>(key - static_cast<const Item*>(other)->key);
    }

    const int key;
    const char name;
    static inline int alive = 0;
};

std::string names(const KvArray& array) {
    std::string result;
    for (std::uint64_t i = 0; i < array.count(); i++) {
        result += array.at(i) == nullptr ? '-' : static_cast<Item*>(array.at(i))->name;
    }
    return result;
}

class KvArrayTest : public testing::Test {
protected:
    KvArrayTest() { array_.setFlag(kArrayOwnsElements, true); }

    void fill(std::initializer_list<std::pair<int, char>> items) {
        for (auto [key, name] : items) {
            ASSERT_EQ(array_.add(new Item(key, name)), 0);
        }
    }

    ErrorCollector errors_;
    KvSortedArray array_;
};

TEST_F(KvArrayTest, GrowsBySixteenOrByDoubling) {
    for (int i = 0; i < 17; i++) {
        array_.addAtIndex(new Item(i, static_cast<char>('a' + i)), array_.count());
        ASSERT_EQ(array_.capacity(), i < 16 ? 16U : 32U);
    }
    EXPECT_EQ(names(array_), "abcdefghijklmnopq");
    KvArray doubling;
    doubling.setGrowthIncrement(0);
    for (std::uint64_t expected : {1U, 2U, 4U, 4U, 8U}) {
        ASSERT_EQ(doubling.addAtIndex(nullptr, 0), 0);
        EXPECT_EQ(doubling.capacity(), expected);
    }
}

TEST_F(KvArrayTest, InsertsRemovesAndIgnoresIndexesBeyondTheEnd) {
    array_.setFlag(kArrayWholeCapacity, true);
    for (auto [index, name] : {std::pair{0, 'c'}, {0, 'a'}, {1, 'b'}, {99, 'd'}}) {
        array_.addAtIndex(new Item(0, name), static_cast<std::uint64_t>(index));
    }
    EXPECT_EQ(names(array_), "abcd");
    std::unique_ptr<KvObject> removed(array_.at(3));
    array_.removeAtIndex(3);
    EXPECT_FALSE(array_.doesExist(removed.get()));
    array_.deleteAtIndex(0);
    array_.removeAtIndex(2);
    array_.deleteAtIndex(7);
    EXPECT_EQ(names(array_), "bc");
    EXPECT_EQ(Item::alive, 3);
    // What was removed stood in the slots behind.
    array_.deleteContents();
    EXPECT_EQ(array_.count(), 0U);
    EXPECT_EQ(array_.capacity(), 16U);
    EXPECT_EQ(Item::alive, 1);
}

TEST_F(KvArrayTest, SizesHaveALimit) {
    ASSERT_EQ(array_.setInitialSize(65535), 0);
    EXPECT_EQ(array_.items()[65534], nullptr);
    EXPECT_EQ(array_.setInitialSize(65536), 1);
    EXPECT_EQ(array_.increaseSize(UINT64_MAX, true), 1);
    EXPECT_EQ(array_.increaseSize(UINT64_MAX / 8, false), 1);
    EXPECT_EQ(array_.capacity(), 65535U);
    EXPECT_EQ(KvErrorKeeper::getLastErrorNumber(), 30190);
    KvArray empty;
    ASSERT_EQ(empty.setInitialSize(0), 0);
    EXPECT_NE(empty.items(), nullptr);
    empty.addAtIndex(nullptr, 0);
    EXPECT_EQ(empty.capacity(), 16U);
}

TEST_F(KvArrayTest, SortsInWithEqualKeysInOrderOfArrivalAndTakesOutDuplicates) {
    fill({{3, 'd'}, {1, 'a'}, {2, 'b'}, {2, 'c'}});
    EXPECT_EQ(names(array_), "abcd");
    for (KvArrayFlag flag : {kArrayInsertionOrder, kArrayInsertionOrder2}) {
        array_.setFlag(flag, true);
        fill({{0, 'x'}});
        array_.setFlag(flag, false);
    }
    EXPECT_EQ(names(array_), "abcdxx");
    array_.realResort();
    EXPECT_EQ(names(array_), "xxabcd");
    array_.addAtIndex(array_.at(0), 99);
    EXPECT_EQ(array_.deleteDuplicates(), 3U);
    EXPECT_EQ(names(array_), "xabd");
    EXPECT_EQ(Item::alive, 4);
    Item twin(2, 'y');
    array_.add(&twin);
    EXPECT_EQ(array_.removeDuplicates(), 1U);
    EXPECT_EQ(Item::alive, 5);
    EXPECT_EQ(array_.shrink(99), 0);
    EXPECT_EQ(names(array_), "xabd------------");
    EXPECT_EQ(array_.shrink(5), 0);
    EXPECT_EQ(array_.capacity(), 5U);
}

}  // namespace

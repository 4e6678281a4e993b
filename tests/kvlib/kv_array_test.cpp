#include "kvlib/kv_array.h"

#include <gtest/gtest.h>

#include <cstdlib>
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

TEST_F(KvArrayTest, GrowsBySixteenAndByDoubling) {
    for (int i = 0; i < 17; i++) {
        array_.addAtIndex(new Item(i, static_cast<char>('a' + i)), array_.count());
        ASSERT_EQ(array_.capacity(), i < 16 ? 16U : 32U);
    }
    EXPECT_EQ(array_.increaseSize(0, true), 0);
    EXPECT_EQ(array_.capacity(), 64U);
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
    EXPECT_TRUE(array_.doesExist(removed.get()));
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

TEST_F(KvArrayTest, InitialSizeHasALimitAndForgetsAnEarlierBuffer) {
    ASSERT_EQ(array_.setInitialSize(2), 0);
    KvObject** held = array_.items();
    ASSERT_EQ(array_.setInitialSize(65535), 0);
    EXPECT_NE(array_.items(), held);
    std::free(held);
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

TEST_F(KvArrayTest, ShrinksOwnBuffersOnly) {
    fill({{1, 'a'}, {2, 'b'}});
    EXPECT_EQ(array_.shrink(3), 0);
    EXPECT_EQ(names(array_), "ab-");
    EXPECT_EQ(array_.capacity(), 3U);
    EXPECT_EQ(array_.shrink(99), 0);
    EXPECT_EQ(array_.count(), 3U);
    array_.deleteContents();
    array_.setFlag(kArrayOwnsSlots, false);
    KvObject** held = array_.items();
    EXPECT_EQ(array_.shrink(0), 0);
    EXPECT_EQ(array_.items(), held);
    std::free(held);
    KvArray owner;
    ASSERT_EQ(owner.setInitialSize(4), 0);
    EXPECT_EQ(owner.shrink(0), 0);
    EXPECT_EQ(owner.items(), nullptr);
}

TEST_F(KvArrayTest, SortsInWithEqualKeysInOrderOfArrival) {
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
}

TEST_F(KvArrayTest, TakesOutDuplicatesInAnyOrder) {
    array_.setFlag(kArrayInsertionOrder, true);
    fill({{1, 'a'}, {2, 'b'}, {1, 'c'}, {1, 'd'}});
    array_.add(array_.at(0));
    EXPECT_EQ(array_.deleteDuplicates(), 3U);
    EXPECT_EQ(names(array_), "ab");
    EXPECT_EQ(Item::alive, 2);
    Item twin(2, 'x');
    array_.add(&twin);
    EXPECT_EQ(array_.removeDuplicates(), 1U);
    EXPECT_EQ(Item::alive, 3);
}

}  // namespace

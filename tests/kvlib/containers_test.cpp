// Strings that grow, texts with places, and arrays.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "kvlib/kv_array.h"
#include "kvlib/kv_string.h"
#include "kvlib/kv_string_w.h"
#include "tests/support/error_collector.h"

namespace {

TEST(KvString, BufferSizesAreExact) {
    KvString text;
    EXPECT_EQ(text.concat(""), 0);
    EXPECT_EQ(text.capacity(), 1U) << "even nothing needs a buffer";
    text.unInitialize();
    ASSERT_EQ(text.initialize("DSN=a"), 0);
    EXPECT_EQ(text.capacity(), 6U);
    EXPECT_TRUE(text.isTerminated());
    ASSERT_EQ(text.concat(";"), 0);
    EXPECT_EQ(text.capacity(), 7U);
    EXPECT_EQ(text.initialLength(), 5U);
    EXPECT_FALSE(text.isTerminated());
    ASSERT_EQ(text.resize(100), 0);
    ASSERT_EQ(text.concat(KvSubString("UID=me", 3)), 0);
    EXPECT_EQ(text.capacity(), 100U) << "what fits does not resize";
    EXPECT_EQ(text.view(), "DSN=a;UID");
    ASSERT_EQ(text.resize(3), 0);
    EXPECT_EQ(text.view(), "DSN");
    text.unInitialize();
    EXPECT_TRUE(text.data() == nullptr && text.capacity() == 0);
}

TEST(KvString, WhatCanNotGrowStaysAsItIs) {
    ErrorCollector errors;
    char buffer[4] = {'a', 'b'};
    KvString text;
    text.borrow(buffer, 2, sizeof buffer);
    EXPECT_EQ(text.concat("c"), 0);
    EXPECT_EQ(text.concat("d"), 1);
    EXPECT_EQ(text.view(), "abc");
    EXPECT_EQ(errors.numbers(), "2716");
    text.unInitialize();
    ASSERT_EQ(text.initialize("abc"), 0);
    EXPECT_EQ(text.resize(UINT64_MAX), 1);
    EXPECT_EQ(text.concat(KvSubString("x", UINT64_MAX - 2)), 1);
    EXPECT_EQ(text.view(), "abc");
    EXPECT_EQ(KvErrorKeeper::getLastErrorNumber(), 30190);
}

TEST(KvParamStringW, FillsPlacesInTheOrderOfTheirNumbersAndAppendedTextIsPlain) {
    const std::tuple<const char16_t*, std::vector<const char16_t*>, std::u16string> rows[] = {
        {u"%2 von %1", {u"a", u"b"}, u"b von a"},
        {u"%1, %1 and %2", {u"a"}, u"a, a and %2"},
        {u"%1%2", {u"%2", u"x"}, u"%2x"},  // a value is no place
        {u"%%12", {u"a", u"b"}, u"%%12"},  // place 12, not 1
        {u"%%2%1", {u"2", u"x"}, u"%x2"},  // a value does not complete a place either
        {u"100% %0 %", {u"a"}, u"100% %0 %"},
        {u"%1", {u"", u"lost"}, u""},
        {u"%1%2%3%4%5%6%7%8%9 %10", {u"a", u"b", u"c", u"d", u"e", u"f", u"g", u"h", u"i", u"j"}, u"abcdefghi j"},
    };
    KvParamStringW text;
    for (const auto& [places, values, expected] : rows) {
        ASSERT_EQ(text.initialize(places), 0) << "a new text begins with its first place";
        for (const char16_t* value : values) {
            ASSERT_EQ(text.setParam(value), 0);
        }
        EXPECT_EQ(text.view(), expected) << fromUtf16(places, kCPUtf8);
    }
    ASSERT_EQ(text.initialize("%1 and %2", kCPUtf8), 0);
    ASSERT_EQ(text.setParam("%2", kCPUtf8), 0);
    ASSERT_EQ(text.concat(u": %2"), 0);
    ASSERT_EQ(text.setParam(u"z"), 0);
    EXPECT_EQ(text.view(), u"%2 and z: %2");
}

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

    ErrorCollector errors_;
    KvSortedArray array_;
};

TEST_F(KvArrayTest, GrowsBySixteenOrByDoublingUpToALimit) {
    KvArray doubling;
    doubling.setGrowthIncrement(0);
    for (std::uint64_t expected : {1U, 2U, 4U, 4U, 8U}) {
        ASSERT_EQ(doubling.addAtIndex(nullptr, 0), 0);
        EXPECT_EQ(doubling.capacity(), expected);
    }
    KvArray empty;
    ASSERT_EQ(empty.setInitialSize(0), 0);
    EXPECT_NE(empty.items(), nullptr);
    ASSERT_EQ(array_.setInitialSize(65535), 0);
    EXPECT_EQ(array_.items()[65534], nullptr);
    EXPECT_EQ(array_.setInitialSize(65536), 1);
    EXPECT_EQ(array_.increaseSize(UINT64_MAX, true), 1);
    EXPECT_EQ(array_.increaseSize(UINT64_MAX / 8, false), 1);
    EXPECT_EQ(array_.capacity(), 65535U);
    EXPECT_EQ(KvErrorKeeper::getLastErrorNumber(), 30190);
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
    EXPECT_TRUE(array_.count() == 0 && array_.capacity() == 16) << "the growth of an array without a size";
    EXPECT_EQ(Item::alive, 1);
}

TEST_F(KvArrayTest, SortsInWithEqualKeysInOrderOfArrivalAndTakesOutDuplicates) {
    for (const auto& [key, name] : {std::pair{3, 'd'}, {1, 'a'}, {2, 'b'}, {2, 'c'}}) {
        ASSERT_EQ(array_.add(new Item(key, name)), 0);
    }
    for (const KvArrayFlag flag : {kArrayInsertionOrder, kArrayInsertionOrder2}) {
        array_.setFlag(flag, true);
        ASSERT_EQ(array_.add(new Item(0, 'x')), 0);
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
    EXPECT_EQ(array_.shrink(6), 0);
    EXPECT_EQ(names(array_), "xabd--");
    EXPECT_EQ(array_.shrink(99), 0);
    EXPECT_EQ(array_.capacity(), 6U);
}

}  // namespace

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

TEST(KvString, GrowsToTheExactSizeOrStaysAsItIs) {
    ErrorCollector errors;
    KvString text;
    EXPECT_EQ(text.concat(""), 0);
    EXPECT_EQ(text.capacity(), 1U) << "even nothing needs a buffer";
    ASSERT_EQ(text.concat("DSN=a;"), 0);
    EXPECT_EQ(text.capacity(), 7U);
    ASSERT_EQ(text.resize(100), 0);
    ASSERT_EQ(text.concat(KvSubString("UID=me", 3)), 0);
    EXPECT_EQ(text.capacity(), 100U) << "what fits does not resize";
    EXPECT_EQ(text.view(), "DSN=a;UID");
    ASSERT_EQ(text.resize(3), 0);
    EXPECT_EQ(text.resize(UINT64_MAX), 1);
    EXPECT_EQ(text.concat(KvSubString("x", UINT64_MAX - 2)), 1);
    EXPECT_EQ(text.view(), "DSN");
    EXPECT_EQ(KvErrorKeeper::getLastErrorNumber(), 30190);
    text.unInitialize();
    KvErrorKeeper::clearLastError();
    char buffer[4] = {'a', 'b'};
    text.borrow(buffer, 2, sizeof buffer);
    EXPECT_EQ(text.concat("c"), 0);
    EXPECT_EQ(text.concat("d"), 1);
    EXPECT_EQ(errors.numbers(), "2716");
}

TEST(KvParamStringW, FillsPlacesInTheOrderOfTheirNumbersAndAppendedTextIsPlain) {
    const std::tuple<const char16_t*, std::vector<const char16_t*>, std::u16string> rows[] = {
        {u"%2 von %1", {u"a", u"b"}, u"b von a"},
        {u"%1, %1 %2", {u"a"}, u"a, a %2"},
        {u"%1%2", {u"%2", u"x"}, u"%2x"},  // a value is no place
        {u"%%12", {u"a", u"b"}, u"%%12"},  // place 12, not 1
        {u"100% %0 %", {u"a"}, u"100% %0 %"},
        {u"%1%2%3%4%5%6%7%8%9 %10", {u"a", u"b", u"c", u"d", u"e", u"f", u"g", u"h", u"i", u"j"}, u"abcdefghi j"},
    };
    KvParamStringW text;
    for (const auto& [places, values, expected] : rows) {
        ASSERT_EQ(text.initialize(places), 0) << "a new text begins with its first place";
        for (const char16_t* value : values) {
            text.setParam(value);
        }
        EXPECT_EQ(text.view(), expected) << fromUtf16(places, kCPUtf8);
    }
    ASSERT_EQ(text.initialize("%1", kCPUtf8), 0);
    ASSERT_EQ(text.concat(u": %1"), 0);
    ASSERT_EQ(text.setParam("a", kCPUtf8), 0);
    EXPECT_EQ(text.view(), u"a: %1");
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

TEST(KvArray, InsertsRemovesSortsAndTakesOutDuplicates) {
    KvSortedArray array;
    array.setFlag(kArrayOwnsElements, true);
    for (const auto& [key, name] : {std::pair{3, 'd'}, {1, 'a'}, {2, 'b'}, {2, 'c'}}) {
        ASSERT_EQ(array.add(new Item(key, name)), 0);
    }
    array.setFlag(kArrayInsertionOrder, true);
    ASSERT_EQ(array.add(new Item(0, 'x')), 0);
    array.addAtIndex(new Item(0, 'y'), 99);
    EXPECT_EQ(names(array), "abcdxy") << "equal keys in order of arrival";
    array.realResort();
    EXPECT_EQ(names(array), "xyabcd");
    EXPECT_EQ(array.deleteDuplicates(), 2U);
    EXPECT_EQ(names(array), "xabd");
    const std::unique_ptr<KvObject> removed(array.at(3));
    array.removeAtIndex(3);
    array.deleteAtIndex(0);
    array.removeAtIndex(2);
    array.deleteAtIndex(7);
    EXPECT_EQ(names(array), "ab");
    EXPECT_EQ(Item::alive, 3);
    array.setFlag(kArrayWholeCapacity, true);
    EXPECT_EQ(array.shrink(3), 0);
    EXPECT_EQ(names(array), "ab-") << "nothing stays in the slots behind";
    array.deleteContents();
    EXPECT_EQ(Item::alive, 1);
}

}  // namespace

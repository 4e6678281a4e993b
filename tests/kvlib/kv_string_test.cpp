#include "kvlib/kv_string.h"

#include <gtest/gtest.h>

#include "kvlib/kv_string_w.h"
#include "tests/support/error_collector.h"

namespace {

TEST(KvString, BufferSizesAreExact) {
    KvString text;
    EXPECT_EQ(text.data(), nullptr);
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
    EXPECT_EQ(text.data(), nullptr);
    EXPECT_EQ(text.capacity(), 0U);
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

TEST(KvParamStringW, FillsPlacesInTheOrderOfTheirNumbers) {
    struct Row {
        std::u16string_view text;
        std::vector<std::u16string_view> values;
        std::u16string_view expected;
    };
    const Row rows[] = {
        {u"%2 von %1", {u"a", u"b"}, u"b von a"},
        {u"%1, %1 and %2", {u"a"}, u"a, a and %2"},
        {u"%1%2", {u"%2", u"x"}, u"%2x"},  // a value is no place
        {u"%%12", {u"a", u"b"}, u"%%12"},  // place 12, not 1
        {u"%%2%1", {u"2", u"x"}, u"%x2"},  // a value does not complete a place either
        {u"100% %0 %", {u"a"}, u"100% %0 %"},
        {u"%1", {u"", u"lost"}, u""},
        {u"%1%2%3%4%5%6%7%8%9 %10", {u"a", u"b", u"c", u"d", u"e", u"f", u"g", u"h", u"i", u"j"}, u"abcdefghi j"},
    };
    for (const Row& row : rows) {
        KvParamStringW text;
        ASSERT_EQ(text.initialize(row.text), 0);
        for (std::u16string_view value : row.values) {
            ASSERT_EQ(text.setParam(value), 0);
        }
        EXPECT_EQ(text.view(), row.expected) << fromUtf16(row.text, kCPUtf8);
    }
}

TEST(KvParamStringW, AppendedTextIsPlain) {
    KvParamStringW text;
    ASSERT_EQ(text.initialize(u"%1 and %2"), 0);
    ASSERT_EQ(text.setParam("%2", kCPUtf8), 0);
    ASSERT_EQ(text.concat(u": %2"), 0);
    ASSERT_EQ(text.setParam(u"z"), 0);
    EXPECT_EQ(text.view(), u"%2 and z: %2");
    ASSERT_EQ(text.initialize("%1", kCPUtf8), 0);
    ASSERT_EQ(text.setParam(u"again"), 0);
    EXPECT_EQ(text.view(), u"again") << "a new text begins with its first place";
}

}  // namespace

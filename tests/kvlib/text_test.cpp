#include "kvlib/text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <tuple>

#include "tests/support/program.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

namespace {

// Katakana SO in Shift-JIS: its trail byte is a backslash.
constexpr const char* kSo = "\x83\x5C";

// Position of a hit, -1 for none.
long offset(const char* text, const char* hit) {
    return hit == nullptr ? -1 : hit - text;
}

TEST(Text, BytesAreComparedUnsignedAndCopiesFitTheirBuffer) {
    EXPECT_EQ(BUTMMCMP("\x61", "\xE1", 1), -1);
    EXPECT_EQ(BUTSTCMP("ab\xFF", "abz"), 1);
    char buffer[16];
    EXPECT_EQ(BUTSTCAT(BUTSTCPY(buffer, "ab") - 1, "cd"), buffer + 4);
    EXPECT_STREQ(buffer, "abcd");
    for (const auto& [size, expected] : {std::pair{5U, "abcd"}, {4U, "abc"}, {1U, ""}, {0U, "########"}}) {
        strCopy(buffer, "########", std::size_t{8});
        strCopy(buffer, size, "abcd");
        EXPECT_STREQ(buffer, expected);
        EXPECT_EQ(buffer[size], '#') << "wrote behind the buffer";
    }
}

TEST(Text, StepsByWholeCharactersAndNeverOverTheEnd) {
    // Half-width katakana, a lead byte cut off by the end and malformed sequences are single bytes.
    const std::tuple<const char*, kvCPType, long> rows[] = {{"", kCPShiftJis, 0},
                                                            {kSo, kCPLocale, 1},
                                                            {"\xB1z", kCPShiftJis, 1},
                                                            {"\xB1z", kCPGbk, 2},
                                                            {"\x83", kCPShiftJis, 1},
                                                            {"\xE2\x82\xAC", kCPUtf8, 3},
                                                            {"\xF0\x9F\x98\x80", kCPUtf8, 4},
                                                            {"\xE2\x82", kCPUtf8, 1},
                                                            {"\xC3(", kCPUtf8, 1},
                                                            {"\xC0\x80", kCPUtf8, 1}};
    for (const auto& [text, page, step] : rows) {
        EXPECT_EQ(offset(text, kvCharNext(text, page)), step) << text << " in " << page;
    }
    // In counted text the limit ends a character and a zero byte does not end the text.
    EXPECT_EQ(offset(kSo, kvCharNext(kSo, kSo + 1, kCPShiftJis)), 1);
    const char zeros[] = {'\0', 'a', 'b'};
    EXPECT_EQ(offset(zeros, kvCharNext(zeros, zeros + 2, kCPShiftJis)), 1);
    EXPECT_EQ(offset(zeros, strFind(zeros, 3, "b", 1, kCPLocale)), 2);
    EXPECT_EQ(strFind("abcd", 3, "cd", 2, kCPLocale), nullptr) << "a hit must lie within the counted text";
}

TEST(Text, Finding) {
    // The first place, and the last one of a single byte.
    const std::tuple<const char*, const char*, kvCPType, long, long> rows[] = {
        {"a=b=c", "=", kCPLocale, 1, 3}, {"a\x83\x5C\\b\x83\x5C", "\\", kCPShiftJis, 3, 3},
        {"", "x", kCPLocale, -1, -1},    {"aab", "ab", kCPLocale, 1, 0},
        {"ab", "", kCPLocale, -1, 0},    {"\x83\x61z", "az", kCPShiftJis, -1, 0}};
    for (const auto& [text, sub, page, first, last] : rows) {
        EXPECT_EQ(offset(text, strFind(text, sub, page)), first) << text << ' ' << sub;
        if (BUTSTLEN(sub) == 1) {
            EXPECT_EQ(offset(text, strFind(text, sub[0], page)), first) << text;
            EXPECT_EQ(offset(text, strFindReverse(text, sub[0], page)), last) << text;
        }
    }
}

TEST(Text, RightTrimAndComparisonWithoutCase) {
    for (const auto& [text, page, expected] : {std::tuple{" a b\t", kCPLocale, " a b"},
                                               {" \t\r\n\v\f", kCPLocale, ""},
                                               {"\x83\x20 ", kCPShiftJis, "\x83\x20"}}) {
        char buffer[16];
        strCopy(buffer, sizeof buffer, text);
        strRightTrim(buffer, page);
        EXPECT_STREQ(buffer, expected);
    }
    // Trail bytes are not letters, but they are when read by bytes; before setlocale nothing beyond ASCII is one.
    const std::tuple<const char*, const char*, kvCPType, int> rows[] = {{"abc", "ABD", kCPLocale, -1},
                                                                        {"ab", "a", kCPLocale, 1},
                                                                        {"a\xE4", "a\xC4", kCPLocale, 1},
                                                                        {"x\x83\x61", "X\x83\x41", kCPShiftJis, 1},
                                                                        {"x\x83\x61", "X\x83\x41", kCPLocale, 0},
                                                                        {"\x83\x41z", "\x83\x41Z", kCPShiftJis, 0},
                                                                        {"\x83\x41", "\x83", kCPShiftJis, 1}};
    for (const auto& [a, b, page, expected] : rows) {
        EXPECT_EQ(strCompareCi(a, b, page), expected) << a << " against " << b;
    }
}

TEST(Text, UpperCaseFollowsTheLocaleAndKeepsTheLength) {
    auto upper = [](std::string text) {
        strUpper(text.data());
        return text;
    };
    std::string before = std::setlocale(LC_CTYPE, nullptr);
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    EXPECT_EQ(upper("caf\xC3\xA9 z"), "CAF\xC3\x89 Z");
    EXPECT_EQ(upper("\xC4\xB1 \xC3\x9F"), "\xC4\xB1 \xC3\x9F") << "dotless i would need one byte less";
    EXPECT_EQ(upper("a\xE9z \xE2\x82"), "A\xE9Z \xE2\x82") << "malformed bytes";
    const TemporaryFolder folder;
    const ScopedEnvironment environment{{"LOCPATH", folder.path()}};
    outputOf("localedef -c -f GBK -i " + folder.write("source", "LC_CTYPE\nEND LC_CTYPE\n") + " " + folder.path("gbk"));
    ASSERT_NE(std::setlocale(LC_CTYPE, "gbk"), nullptr) << "needs the package locales";
    EXPECT_EQ(upper("\x83\x61\xA8\xA2z"), "\x83\x61\xA8\xA2Z") << "trail bytes are no letters";
    EXPECT_EQ(strFind("\x83\x61z", 'a', kCPLocale), nullptr);
    EXPECT_TRUE(kvIsLeadByte('\x83', kCPLocale) && !kvIsLeadByte('a', kCPLocale));
    std::setlocale(LC_CTYPE, before.c_str());
}

TEST(Text, ConversionBothWays) {
    const std::string longBytes(5000, 'x');
    const std::tuple<kvCPType, std::string, std::u16string> rows[] = {
        {kCPUtf8, longBytes + "\xC3\xA9\xF0\x9F\x98\x80", std::u16string(5000, u'x') + u"\u00E9\U0001F600"},
        {kCPUtf8, std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
        {kCPShiftJis, "\x83\x5C\xB1", u"\u30BD\uFF71"},
        {kCPGbk, "\xD6\xD0", u"\u4E2D"},
        {kCPKorean, "\xB0\xA1", u"\uAC00"},
        {kCPBig5, "\xA4\xA4", u"\u4E2D"},
    };
    for (const auto& [page, bytes, wide] : rows) {
        EXPECT_EQ(toUtf16(bytes, page), wide) << page;
        EXPECT_EQ(fromUtf16(wide, page), bytes) << page;
    }
    EXPECT_EQ(toUtf16("a\xFF\x62\xE2\x82", kCPUtf8), u"a\uFFFDb\uFFFD") << "malformed inside and cut off at the end";
    EXPECT_EQ(fromUtf16(u"\U0001F600z", kCPShiftJis).back(), 'z') << "what the page lacks is replaced";
}

}  // namespace

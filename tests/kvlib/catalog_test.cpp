#include "kvlib/catalog.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <tuple>

#include "kvlib/ini_lock_mark.h"
#include "kvlib/library_text.h"
#include "kvlib/text.h"
#include "tests/support/program.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

namespace {

// An install directory with one catalog in several locales; the text says which one it is.
class MessageCatalogTest : public testing::Test {
protected:
    MessageCatalogTest() {
        for (const char* locale : {"en_US", "de_DE", "C.UTF-8"}) {
            folder_.makeCatalog(std::string("locale/") + locale + "/LC_MESSAGES/test23.mo",
                                {{1, locale}, {2, "Configure"}, {3, "x %s %n"}});
        }
        strCopy(InstallDirLocation, kInstallDirSize, folder_.path().c_str());
    }
    ~MessageCatalogTest() override {
        bosFreeResourceDLL(nullptr, nullptr);
        *InstallDirLocation = '\0';
        std::setlocale(LC_ALL, "C");
    }

    static std::string lookUp(nl_catd handle, std::uint32_t id, std::int32_t size = 64) {
        char buffer[64] = "untouched";
        LoadStringFromOpenFile(handle, id, buffer, size);
        return buffer;
    }

    TemporaryFolder folder_;
};

TEST_F(MessageCatalogTest, TheLocaleIsTheProcessesOrElseTheEnvironments) {
    using Value = std::optional<std::string>;
    const struct {
        const char* label;
        Value lcAll, lcMessages, lang;
        const char *setTo, *expected;  // what the process passes to setlocale, and the catalog's locale
    } rows[] = {
        {"nothing set", {}, {}, {}, "C", "en_US"},
        {"LC_MESSAGES C is passed over", {}, "C", "de_DE", "C", "de_DE"},
        {"LC_MESSAGES before LANG", {}, "de_DE", "en_US", "C", "de_DE"},
        {"codeset is not stripped, English is the fallback", {}, {}, "de_DE.UTF-8", "C", "en_US"},
        {"before setlocale LC_ALL does not count", "C.UTF-8", {}, "de_DE", "C", "de_DE"},
        {"after setlocale LC_ALL wins over LANG", "C.UTF-8", {}, "de_DE", "", "C.UTF-8"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const ScopedEnvironment environment{{"LC_ALL", row.lcAll}, {"LC_MESSAGES", row.lcMessages}, {"LANG", row.lang}};
        ASSERT_NE(std::setlocale(LC_ALL, row.setTo), nullptr);
        const nl_catd handle = OpenStrings(nullptr, "test23.mo");
        EXPECT_EQ(lookUp(handle, 1), row.expected);
        CloseStrings(handle);
    }
}

TEST_F(MessageCatalogTest, LookupsAreCutAndFallBackToTheNumber) {
    const nl_catd open = OpenStrings("test23", nullptr);
    const std::tuple<nl_catd, std::uint32_t, std::int32_t, const char*> rows[] = {
        {open, 2, 5, "Conf"},       {open, 2, 0, "Configure"},  // which trusts the buffer
        {open, 2, -1, "untouched"}, {open, 3, 64, "x %s %n"},
        {open, 1016, 3, "10"},      {invalidCatalog(), 0xFFFFFFFF, 64, "-1"},
    };
    for (const auto& [handle, id, size, expected] : rows) {
        EXPECT_EQ(lookUp(handle, id, size), expected) << size;
    }
    CloseStrings(open);
    EXPECT_EQ(OpenStrings("absent", nullptr), invalidCatalog());
    CloseStrings(invalidCatalog());
}

TEST_F(MessageCatalogTest, TheResourceCatalogStaysOpenUntilItsLastUserIsGone) {
    char16_t buffer[32];
    const auto text = [&buffer] {
        LoadStringW(nullptr, 2, buffer, 32);
        return std::u16string(buffer);
    };
    std::uint32_t users = 0;
    EXPECT_EQ(bosLoadResourceDLL("absent", 0, nullptr, &users), 0);
    EXPECT_EQ(text(), u"2");
    EXPECT_EQ(bosLoadResourceDLL("test23", 0, nullptr, &users), 0) << "a failed open is tried again";
    EXPECT_EQ(bosFreeResourceDLL(nullptr, &users), 0);
    EXPECT_EQ(users, 1U);
    EXPECT_EQ(text(), u"Configure");
    EXPECT_EQ(LoadStringW(nullptr, 2, buffer, 5), 4);
    EXPECT_EQ(std::u16string(buffer), u"Conf");
    bosFreeResourceDLL(nullptr, &users);
    EXPECT_EQ(text(), u"2");

    folder_.makeCatalog("locale/en_US/LC_MESSAGES/vhutl23.mo", {{1, "own"}});
    {
        const IniLockMark mark;
        openLibraryCatalog();
        EXPECT_EQ(CatFD, invalidCatalog()) << "the library's own waits for INI locks";
    }
    openLibraryCatalog();
    EXPECT_NE(CatFD, invalidCatalog());
}

TEST(StaticStart, MaskAndLocksAreReadyBeforeMain) {
    EXPECT_EQ(outputOf("KV_DEBUGGING=0xFFFFFFFFFFFFFFFF " BOS_STATIC_START), "ffffffffffffffff 4711\n");
}

}  // namespace

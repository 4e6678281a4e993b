#include "kvlib/catalog.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <tuple>

#include "kvlib/text.h"
#include "tests/support/program.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

namespace {

std::string inLocale(const std::string& locale, const std::string& file) {
    return "locale/" + locale + "/LC_MESSAGES/" + file;
}

// An install directory with one catalog in several locales; the text says which one it is.
class MessageCatalogTest : public testing::Test {
protected:
    MessageCatalogTest() {
        for (const char* locale : {"en_US", "de_DE", "C.UTF-8"}) {
            folder_.makeCatalog(inLocale(locale, "test.m"), {{1, locale}, {2, "Configure"}, {3, "x %s %n"}});
        }
        folder_.makeCatalog(inLocale("en_US", "test23.mo"), {{1, "library"}});
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
    ScopedEnvironment environment_{{"LC_ALL", {}}, {"LC_MESSAGES", {}}, {"LANG", {}}};
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
        {"all C", {}, "C", "C", "C", "en_US"},
        {"codeset is not stripped, English is the fallback", {}, {}, "en_US.UTF-8", "C", "en_US"},
        {"no catalog of that locale", {}, {}, "fr_FR", "C", "en_US"},
        {"before setlocale LC_ALL does not count", "C.UTF-8", {}, "de_DE", "C", "de_DE"},
        {"after setlocale LC_ALL wins over LANG", "C.UTF-8", {}, "de_DE", "", "C.UTF-8"},
        {"empty variable names no locale", {}, {}, "", "C", "en_US"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const ScopedEnvironment environment{{"LC_ALL", row.lcAll}, {"LC_MESSAGES", row.lcMessages}, {"LANG", row.lang}};
        ASSERT_NE(std::setlocale(LC_ALL, row.setTo), nullptr);
        const nl_catd handle = OpenStrings(nullptr, "test.m");
        EXPECT_EQ(lookUp(handle, 1), row.expected);
        CloseStrings(handle);
    }
}

TEST_F(MessageCatalogTest, LookupsAreCutAndFallBackToTheNumber) {
    const nl_catd open = OpenStrings(nullptr, "test.m");
    const std::tuple<const char*, nl_catd, std::uint32_t, std::int32_t, const char*> rows[] = {
        {"cut", open, 2, 5, "Conf"},
        {"exactly full", open, 2, 10, "Configure"},
        {"size 0 trusts the buffer", open, 2, 0, "Configure"},
        {"negative size writes nothing", open, 2, -1, "untouched"},
        {"percent signs are text", open, 3, 64, "x %s %n"},
        {"missing number", open, 1016, 64, "1016"},
        {"no catalog, cut as well", invalidCatalog(), 1016, 3, "10"},
        {"numbers are shown signed", invalidCatalog(), 0xFFFFFFFF, 64, "-1"},
    };
    for (const auto& [label, handle, id, size, expected] : rows) {
        SCOPED_TRACE(label);
        EXPECT_EQ(lookUp(handle, id, size), expected);
    }
    CloseStrings(open);
    const nl_catd ofALibrary = OpenStrings("test23", nullptr);
    EXPECT_EQ(lookUp(ofALibrary, 1), "library");
    CloseStrings(ofALibrary);
    EXPECT_EQ(OpenStrings("absent", nullptr), invalidCatalog());
    CloseStrings(invalidCatalog());
}

TEST_F(MessageCatalogTest, TheResourceCatalogStaysOpenUntilItsLastUserIsGone) {
    const auto text = [] {
        char buffer[64];
        const std::int32_t length = LoadString(nullptr, 1, buffer, sizeof buffer);
        EXPECT_EQ(length, static_cast<std::int32_t>(std::string(buffer).size()));
        return std::string(buffer);
    };
    std::uint32_t users = 0;
    EXPECT_EQ(bosLoadResourceDLL("absent", 0, nullptr, &users), 0);
    EXPECT_EQ(text(), "1");
    EXPECT_EQ(bosLoadResourceDLL("test23", 0, nullptr, &users), 0) << "a failed open is tried again";
    EXPECT_EQ(bosFreeResourceDLL(nullptr, &users), 0);
    EXPECT_EQ(users, 1U);
    EXPECT_EQ(text(), "library");
    bosFreeResourceDLL(nullptr, &users);
    EXPECT_EQ(text(), "1");

    bosLoadResourceDLL("test23", 0, nullptr, &users);
    bosFreeResourceDLL(nullptr, nullptr);
    EXPECT_EQ(text(), "1") << "closing without a counter closes for all";
}

TEST_F(MessageCatalogTest, WideTextsCountUnits) {
    bosLoadResourceDLL("test23", 0, nullptr, nullptr);
    char16_t buffer[32];
    // Nothing to convert leaves the buffer alone.
    for (const auto& [size, length, text] : {std::tuple{32, 7, u"library"}, {4, 3, u"lib"}, {1, 0, u"lib"}}) {
        EXPECT_EQ(LoadStringW(nullptr, 1, buffer, size), length);
        EXPECT_EQ(std::u16string(buffer), text);
    }
}

TEST_F(MessageCatalogTest, TheLibrarysCatalogWaitsForIniLocks) {
    folder_.makeCatalog(inLocale("en_US", "vhutl23.mo"), {{1, "own"}});
    {
        const IniLockMark mark;
        openLibraryCatalog();
        EXPECT_EQ(CatFD, invalidCatalog());
    }
    openLibraryCatalog();
    EXPECT_NE(CatFD, invalidCatalog());
}

TEST(StaticStart, MaskAndLocksAreReadyBeforeMain) {
    const std::pair<const char*, const char*> rows[] = {
        {"KV_DEBUGGING=0xFFFFFFFFFFFFFFFF", "ffffffffffffffff 4711\n"},
        {"KV_DEBUGGING=yes", "0 4711\n"},
        {"-u KV_DEBUGGING", "0 4711\n"},
    };
    for (const auto& [debugging, expected] : rows) {
        EXPECT_EQ(outputOf(std::string("env ") + debugging + " " BOS_STATIC_START), expected) << debugging;
    }
}

}  // namespace

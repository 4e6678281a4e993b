// Holds the numbers of the program against the texts that are shipped.
#include <gtest/gtest.h>
#include <nl_types.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

std::string contents(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(VH_TEST_CATALOG_SOURCES "/" + name).rdbuf();
    return text.str();
}

// The numbers of each enumeration of the header.
std::map<std::string, std::set<int>> declaredNumbers() {
    const std::string header = contents("message_numbers.h");
    std::map<std::string, std::set<int>> numbers;
    std::map<std::string, int> byName;
    std::string space;
    const std::regex line(R"(namespace (\w+) \{|(k\w+) = (\d+|[\w:]+),)");
    for (auto found = std::sregex_iterator(header.begin(), header.end(), line); found != std::sregex_iterator();
         ++found) {
        const std::smatch& match = *found;
        if (match[1].matched) {
            space = match[1];
            continue;
        }
        const std::string value = match[3];
        const int number = std::isdigit(value[0]) != 0 ? std::stoi(value) : byName.at(value);
        byName[space + "::" + match[2].str()] = number;
        EXPECT_TRUE(numbers[space].insert(number).second) << space << " has " << number << " twice";
    }
    return numbers;
}

// What stands for something else in a text, and, where they have a meaning, the ends of lines: the same in every
// language.
std::multiset<std::string> markersOf(const std::string& text, bool hasLines) {
    const std::regex marker(hasLines ? "%[0-9a-z]|\n" : "%[0-9a-z]");
    return {std::sregex_token_iterator(text.begin(), text.end(), marker), std::sregex_token_iterator()};
}

using Texts = std::map<int, std::string>;

Texts textsOf(const std::string& catalogPath) {
    const nl_catd catalog = catopen(catalogPath.c_str(), 0);
    EXPECT_NE(catalog, reinterpret_cast<nl_catd>(-1)) << catalogPath;
    Texts texts;
    for (int number = 0; number <= UINT16_MAX; ++number) {
        if (const char* text = catgets(catalog, 1, number, nullptr)) {
            texts[number] = text;
        }
    }
    catclose(catalog);
    return texts;
}

// What is not translated: names, and words that another language has too.
bool isSameInEnglish(const std::string& text, const std::string& language) {
    static const std::set<std::string> kNames{"Varnholt Technologies",
                                              "Data access for Unix and Linux",
                                              "Varnholt ODBC Administrator",
                                              "Step API",
                                              "OK",
                                              "%1 (%2)",
                                              "%1: %2",
                                              "%1 %2"};
    static const std::set<std::string> kWords{"Date",   "Description", "Filter", "Name",   "Port",
                                              "Server", "Server: %1",  "Socket", "Version"};
    return text.size() == 1 || kNames.count(text) > 0 || (language != "ja" && kWords.count(text) > 0);
}

TEST(CatalogsTest, EveryNumberHasATextInEveryLanguage) {
    std::map<std::string, std::set<int>> declared = declaredNumbers();
    ASSERT_EQ(declared.size(), 4U);
    std::istringstream languages("en_US " VH_TEST_LANGUAGES);
    for (std::string language; languages >> language;) {
        for (const auto& [space, name, extension] : {std::array{"Message", "odbc", ".m"},
                                                     {"LibraryMessage", "vhutl23", ".mo"},
                                                     {"SetupMessage", "vhsetup23", ".mo"},
                                                     {"DoctorMessage", "odbcdoctor", ".mo"}}) {
            SCOPED_TRACE(language + " " + name);
            // Else gencat drops what is not ASCII.
            EXPECT_TRUE(contents(language + "/" + name + ".msg").starts_with("$ codeset=UTF-8\n"));
            const std::string file = std::string("/LC_MESSAGES/") + name + extension;
            const Texts english = textsOf(VH_TEST_CATALOGS "/en_US" + file);
            std::set<int> written;
            for (const auto& [number, text] : textsOf(VH_TEST_CATALOGS "/" + language + file)) {
                written.insert(number);
                EXPECT_TRUE(!text.empty() && text.size() <= (number == 7300 || number == 7301 ? 49 : 511)) << number;
                const bool hasLines = space == std::string("DoctorMessage") && number >= 100;
                EXPECT_TRUE(text != english.at(number) || language == "en_US" || isSameInEnglish(text, language))
                    << number << text;
                EXPECT_EQ(markersOf(text, hasLines), markersOf(english.at(number), hasLines)) << number << text;
            }
            EXPECT_EQ(written, declared[space]);
        }
    }
}

}  // namespace

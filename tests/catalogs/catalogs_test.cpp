// Holds the numbers of the program against the texts that are shipped.
#include <gtest/gtest.h>
#include <nl_types.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <tuple>

namespace {

std::string contents(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(VH_TEST_CATALOG_SOURCES "/" + name).rdbuf();
    return text.str();
}

std::vector<std::smatch> matches(const std::string& text, const std::regex& pattern) {
    return {std::sregex_iterator(text.begin(), text.end(), pattern), {}};
}

// The numbers of each enumeration of the header.
std::map<std::string, std::set<int>> declaredNumbers() {
    const std::string header = contents("message_numbers.h");
    std::map<std::string, std::set<int>> numbers;
    std::map<std::string, int> byName;
    std::string space;
    for (const std::smatch& match : matches(header, std::regex(R"(namespace (\w+) \{|(k\w+) = (\d+|[\w:]+),)"))) {
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

TEST(CatalogsTest, EveryNumberHasATextAndEveryTextANumber) {
    const std::tuple<const char*, const char*, const char*> kCases[] = {{"Message", "odbc", "odbc.m"},
                                                                        {"LibraryMessage", "vhutl23", "vhutl23.mo"},
                                                                        {"SetupMessage", "vhsetup23", "vhsetup23.mo"}};
    std::map<std::string, std::set<int>> declared = declaredNumbers();
    ASSERT_EQ(declared.size(), std::size(kCases));
    for (const auto& [space, name, compiled] : kCases) {
        SCOPED_TRACE(name);
        const std::string source = contents("en_US/" + std::string(name) + ".msg");
        EXPECT_TRUE(source.starts_with("$ codeset=UTF-8\n"));  // else gencat drops what is not ASCII
        std::set<int> written;
        for (const std::smatch& match : matches(source, std::regex(R"((?:^|\n)(\d+) )"))) {
            const int number = std::stoi(match[1]);
            EXPECT_TRUE(written.insert(number).second) << number << " twice";
        }
        EXPECT_EQ(written, declared[space]);

        nl_catd catalog = catopen((VH_TEST_CATALOGS "/" + std::string(compiled)).c_str(), 0);
        ASSERT_NE(catalog, reinterpret_cast<nl_catd>(-1));
        for (const int number : declared[space]) {
            const std::string text = catgets(catalog, 1, number, "");
            EXPECT_FALSE(text.empty()) << number;
            EXPECT_LE(text.size(), number == 7300 || number == 7301 ? 49U : 511U) << number;
        }
        catclose(catalog);
    }
}

}  // namespace

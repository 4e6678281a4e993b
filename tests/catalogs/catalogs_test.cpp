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

TEST(CatalogsTest, EveryNumberHasATextAndEveryTextANumber) {
    std::map<std::string, std::set<int>> declared = declaredNumbers();
    ASSERT_EQ(declared.size(), 4U);
    for (const auto& [space, name, compiled] : {std::array{"Message", "odbc", "odbc.m"},
                                                {"LibraryMessage", "vhutl23", "vhutl23.mo"},
                                                {"SetupMessage", "vhsetup23", "vhsetup23.mo"},
                                                {"DoctorMessage", "odbcdoctor", "odbcdoctor.mo"}}) {
        SCOPED_TRACE(name);
        // Else gencat drops what is not ASCII.
        EXPECT_TRUE(contents("en_US/" + std::string(name) + ".msg").starts_with("$ codeset=UTF-8\n"));
        const nl_catd catalog = catopen((VH_TEST_CATALOGS "/" + std::string(compiled)).c_str(), 0);
        ASSERT_NE(catalog, reinterpret_cast<nl_catd>(-1));
        std::set<int> written;
        for (int number = 0; number <= UINT16_MAX; ++number) {
            if (const char* text = catgets(catalog, 1, number, nullptr)) {
                written.insert(number);
                EXPECT_TRUE(*text != '\0' && std::strlen(text) <= (number == 7300 || number == 7301 ? 49 : 511))
                    << number;
            }
        }
        EXPECT_EQ(written, declared[space]);
        catclose(catalog);
    }
}

}  // namespace

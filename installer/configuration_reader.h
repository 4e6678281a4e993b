// Many answers from one reading of a configuration file. The ODBC installer library reads the whole file for each
// question, and tells keys and values one by one. GUI thread only.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "installer/configuration.h"
#include "installer/ini_text.h"

namespace installer {

// What a file says when this is made. The keys of a section are those that the library lists. Where the file is plain
// (installer/plain_text.h) the library is shown no more than that section of the text that was read, and the values
// are those of the same text. Of any other file the library tells each of them at the time of the question.
class ConfigurationReader {
public:
    // `file` is kDataSourceFile, an absolute path, or what else the library has a file for.
    explicit ConfigurationReader(std::string file);

    // As the functions of installer/configuration.h of these names.
    [[nodiscard]] NameList listKeys(const std::string& section, Growth growth);
    [[nodiscard]] std::string readValue(const std::string& section, const std::string& key, std::size_t size = 1024);
    [[nodiscard]] std::vector<Attribute> readSection(const std::string& section);

private:
    std::string_view valueInSection(const std::string& key);

    std::string file_;
    std::optional<std::string> text_;  // A plain one.
    // Of the section that was asked for last; the values by foldedName(), once there was a second question.
    std::optional<std::string> section_;
    std::vector<IniLine> entries_;
    std::unordered_map<std::string, std::string_view> values_;
    bool wasAsked_ = false;
};

// Key and value of each line of `section`, in file order; none for a section that is missing or can't be read.
[[nodiscard]] std::vector<Attribute> readSection(const std::string& section, const std::string& file);

}  // namespace installer

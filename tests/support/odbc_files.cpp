#include "tests/support/odbc_files.h"

#include <filesystem>
#include <regex>
#include <sstream>

OdbcFiles::OdbcFiles()
    : environment_({{"HOME", folder().path()},
                    {"ODBCINI", path(kUser)},
                    {"ODBC_INI", std::nullopt},
                    {"ODBCSYSINI", folder().path()},
                    {"ODBCINSTINI", kDrivers},
                    {"ODBCINST", path(kDrivers)}}) {
    empty();
}

OdbcFiles::~OdbcFiles() {
    empty();
}

const TemporaryFolder& OdbcFiles::folder() {
    static const TemporaryFolder shared;
    return shared;
}

void OdbcFiles::empty() {
    for (const auto& entry : std::filesystem::directory_iterator(folder().path())) {
        std::filesystem::remove_all(entry.path());
    }
}

std::string OdbcFiles::summary() const {
    std::string text;
    std::istringstream file(read(kUser));
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('[')) {
            text += (text.empty() ? "" : "} ") + line.substr(1, line.find(']') - 1) + "{";
        } else if (!line.empty() && !text.empty()) {
            text += text.back() == '{' ? "" : "|";
            text += std::regex_replace(line, std::regex("\\s*=\\s*"), "=", std::regex_constants::format_first_only);
        }
    }
    return text + (text.empty() ? "" : "}");
}

std::string OdbcFiles::section(const std::string& name) const {
    const std::string all = " " + summary();
    const std::size_t at = all.find(" " + name + "{");
    const std::size_t begin = at + name.size() + 2;
    return at == std::string::npos ? "(none)" : all.substr(begin, all.find('}', begin) - begin);
}

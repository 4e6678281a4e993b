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

OdbcFiles::Sections OdbcFiles::userSections() const {
    Sections sections;
    std::istringstream file(read(kUser));
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('[')) {
            sections.push_back({line.substr(1, line.find(']') - 1), {}});
        } else if (!line.empty() && !sections.empty()) {
            sections.back().second.push_back(
                std::regex_replace(line, std::regex("\\s*=\\s*"), "=", std::regex_constants::format_first_only));
        }
    }
    return sections;
}

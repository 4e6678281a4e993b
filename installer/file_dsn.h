// File data sources through the ODBC installer library: the one section of their files, and writing new ones. Reading
// goes through installer/configuration.h, changing through installer/configuration_change.h. docs/file-dsn.md tells the
// format. GUI thread only.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace installer {

inline constexpr const char* kFileDsnSection = "ODBC";
inline constexpr std::string_view kFileDsnExtension = ".dsn";

// Writes one key of the new file data source `path` (absolute, ending in ".dsn"), which is made when it is not there
// (SQLWriteFileDSN). A key that is there already moves to the end, unless it is the first. False when the library
// refuses, or when the line would be longer than kLongestLine: then nothing is written, since the rest would become a
// line of its own. A full disk the library does not notice.
[[nodiscard]] bool writeFileDsnValue(const std::string& path, const std::string& key, const std::string& value);

// The driver's name in the value of "Driver", without the one pair of braces that may quote it.
[[nodiscard]] std::string driverName(const std::string& value);

// `path`, with ".dsn" behind it unless exactly that is what follows its last ".".
[[nodiscard]] std::string withFileDsnExtension(const std::string& path);

}  // namespace installer

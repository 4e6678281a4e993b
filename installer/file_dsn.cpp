#include "installer/file_dsn.h"

#include <odbcinst.h>

#include <algorithm>
#include <vector>

#include "installer/configuration.h"

namespace installer {

namespace {

// Whether the section has the key, and not as its first.
bool isLaterKey(const std::string& path, const std::string& key) {
    const std::vector<std::string> keys = listKeys(kFileDsnSection, path, Growth::kByDoubling).names;
    const auto found =
        std::find_if(keys.begin(), keys.end(), [&key](const std::string& other) { return sameName(other, key); });
    return found != keys.begin() && found != keys.end();
}

}  // namespace

bool writeFileDsnValue(const std::string& path, const std::string& key, const std::string& value) {
    const auto write = [&](const char* text) {
        return SQLWriteFileDSN(path.c_str(), kFileDsnSection, key.c_str(), text) != 0;
    };
    // A key that is there already must go first: the library would write its new value over the first key of the
    // section.
    return key.size() + 1 + value.size() <= kLongestLine && (!isLaterKey(path, key) || write(nullptr)) &&
           write(value.c_str());
}

std::string driverName(const std::string& value) {
    return value.size() >= 2 && value.front() == '{' && value.back() == '}' ? value.substr(1, value.size() - 2) : value;
}

std::string withFileDsnExtension(const std::string& path) {
    const std::size_t dot = path.rfind('.');
    return dot != std::string::npos && path.compare(dot, std::string::npos, kFileDsnExtension) == 0
               ? path
               : path + std::string(kFileDsnExtension);
}

}  // namespace installer

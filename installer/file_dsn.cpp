#include "installer/file_dsn.h"

#include <odbcinst.h>

#include <cstring>
#include <vector>

#include "installer/configuration.h"

namespace installer {

namespace {

// Where the keys of that name stand in the section, of which a file made by hand may have several.
std::vector<std::size_t> placesOf(const std::string& path, const std::string& key) {
    const std::vector<std::string> keys = listKeys(kFileDsnSection, path, Growth::kByDoubling).names;
    std::vector<std::size_t> places;
    for (std::size_t place = 0; place < keys.size(); ++place) {
        if (sameName(keys[place], key)) {
            places.push_back(place);
        }
    }
    return places;
}

}  // namespace

bool writeFileDsnValue(const std::string& path, const std::string& key, const char* value) {
    if (value != nullptr && key.size() + 1 + std::strlen(value) > kLongestLine) {
        return false;
    }
    const auto write = [&](const char* text) {
        return SQLWriteFileDSN(path.c_str(), kFileDsnSection, key.c_str(), text) != 0;
    };
    const std::vector<std::size_t> places = placesOf(path, key);
    // A key that is there already must go first: the library would write its new value over the first key of the
    // section.
    const bool staysInPlace = value != nullptr && !places.empty() && places.front() == 0;
    for (std::size_t count = staysInPlace ? 0 : places.size(); count > 0; --count) {
        if (!write(nullptr)) {
            return false;
        }
    }
    return value == nullptr || write(value);
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

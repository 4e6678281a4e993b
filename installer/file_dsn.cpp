#include "installer/file_dsn.h"

#include <odbcinst.h>

#include <algorithm>

#include "installer/configuration.h"

namespace installer {

bool writeFileDsnValue(const std::string& path, const std::string& key, const char* value) {
    std::string bounded = value != nullptr ? value : "";
    if (key.size() + 1 + bounded.size() > kLongestLine) {
        bounded.resize(kLongestLine - std::min(kLongestLine, key.size() + 1));
    }
    const bool written =
        SQLWriteFileDSN(path.c_str(), kFileDsnSection, key.c_str(), value != nullptr ? bounded.c_str() : nullptr) != 0;
    // The library goes on answering what it read before.
    forgetCachedValues();
    return written;
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

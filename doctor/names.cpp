#include "doctor/names.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace doctor {

std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

std::string baseName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

bool isManagerName(const std::string& path) {
    constexpr std::array<std::string_view, 4> kNames{"libodbc.so", "libodbc-", "libiodbc.so", "libiodbc-"};
    const std::string base = baseName(path);
    return std::any_of(kNames.begin(), kNames.end(), [&base](std::string_view name) { return base.starts_with(name); });
}

}  // namespace doctor

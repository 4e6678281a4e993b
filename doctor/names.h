// Names of files.
#pragma once

#include <string>

namespace doctor {

// Of a path: what is before its last slash, and what is behind it.
[[nodiscard]] std::string folderOf(const std::string& path);
[[nodiscard]] std::string baseName(const std::string& path);

// Whether a library is called as driver managers are.
[[nodiscard]] bool isManagerName(const std::string& path);

}  // namespace doctor

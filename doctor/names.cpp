#include "doctor/names.h"

#include <algorithm>

namespace doctor {

std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

std::string baseName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string folded(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
    });
    return name;
}

}  // namespace doctor

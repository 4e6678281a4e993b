#include "components/small_files.h"

#include <unistd.h>

#include <array>
#include <cstdio>

std::string readFile(const std::string& path) {
    std::string text;
    if (FILE* file = std::fopen(path.c_str(), "re")) {
        std::array<char, 4096> part{};
        while (const std::size_t count = std::fread(part.data(), 1, part.size(), file)) {
            text.append(part.data(), count);
        }
        std::fclose(file);
    }
    return text;
}

bool writeFile(const std::string& path, const std::string& text) {
    const std::string part = path + "." + std::to_string(getpid());
    FILE* file = std::fopen(part.c_str(), "we");
    if (file == nullptr) {
        return false;
    }
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    if (std::fclose(file) != 0 || !isWritten || std::rename(part.c_str(), path.c_str()) != 0) {
        std::remove(part.c_str());
        return false;
    }
    return true;
}

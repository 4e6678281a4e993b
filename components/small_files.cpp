#include "components/small_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>

std::string readFile(const std::string& path) {
    constexpr off_t kMost = 16 << 20;
    std::string text;
    // A pipe would wait for somebody who writes.
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat status {};
    if (file >= 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= kMost) {
        std::array<char, 4096> part{};
        for (ssize_t count = 0; (count = read(file, part.data(), part.size())) > 0;) {
            text.append(part.data(), static_cast<std::size_t>(count));
        }
    }
    if (file >= 0) {
        close(file);
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

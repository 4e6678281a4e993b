// A file in memory alone, which nobody else can open, and which goes with the process whatever ends it.
#pragma once

#include <string>

namespace installer {

class PrivateFile {
public:
    PrivateFile();
    ~PrivateFile();
    PrivateFile(const PrivateFile&) = delete;
    PrivateFile& operator=(const PrivateFile&) = delete;

    // False, with errno set, when it could not be made.
    explicit operator bool() const noexcept { return descriptor_ >= 0; }
    // Under which this process, or a copy of it, opens it.
    [[nodiscard]] std::string path() const;
    // All of its text. Both false with errno set.
    [[nodiscard]] bool write(const std::string& text) const;
    [[nodiscard]] bool read(std::string& text) const;

private:
    int descriptor_;
};

}  // namespace installer

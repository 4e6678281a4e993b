// A file in memory alone, which nobody else can open, and which goes with the process whatever ends it.
#pragma once

#include <optional>
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

// The ODBC installer library takes the file `path` for the user's file of data sources, whatever its mode is, while
// this lives. GUI thread only: the library is told of it through the environment.
class CopyForLibrary {
public:
    explicit CopyForLibrary(const std::string& path);
    ~CopyForLibrary();
    CopyForLibrary(const CopyForLibrary&) = delete;
    CopyForLibrary& operator=(const CopyForLibrary&) = delete;

private:
    std::optional<std::string> before_;
    unsigned short modeBefore_;
};

}  // namespace installer

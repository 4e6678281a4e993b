// A file that is to be overwritten, out of the way while something else makes another in its place. GUI thread only.
#pragma once

#include <string>

class FileAside {
public:
    // Moves the regular file `path` to another name beside it. False in the end when it stays where it is.
    explicit FileAside(const std::string& path);
    // Lets the old file go when there is a new one, and brings it back otherwise: an empty file is none, since the
    // installer library makes one by reading. The same happens when the program ends or dies before.
    ~FileAside();
    FileAside(const FileAside&) = delete;
    FileAside& operator=(const FileAside&) = delete;

    explicit operator bool() const noexcept { return !aside_.empty(); }

private:
    void startGuardian();

    std::string path_;
    std::string aside_;  // Empty when nothing was moved.
    int lifeline_ = -1;
};

// Whether a file is still the same.
#pragma once

#include <sys/types.h>

#include <ctime>
#include <string>

// All that tells one state of a file from another.
struct FileState {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::time_t modified = 0;
    long modifiedNanoseconds = 0;
    std::time_t changed = 0;  // Nobody can set this date.
    long changedNanoseconds = 0;

    bool operator==(const FileState&) const = default;
};

// All zero for a file that is not there.
FileState fileState(const std::string& path);

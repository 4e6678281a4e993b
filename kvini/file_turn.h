// Who of this process has an INI file open. The system's record locks keep out other programs alone, and all that a
// process holds on a file go with the first of its descriptors that is closed, so the threads take turns.
#pragma once

#include <sys/stat.h>

#include "kvlib/ini_lock_mark.h"

// From before a file is locked, or else from before it is closed, until after it is closed. Waits while another thread
// has its turn with the same file, by whatever path. A thread has one turn at a time and takes no lock meanwhile; no
// catalog may be opened either.
class FileTurn {
public:
    explicit FileTurn(const struct stat& file) noexcept;
    ~FileTurn();
    FileTurn(const FileTurn&) = delete;
    FileTurn& operator=(const FileTurn&) = delete;

    // Whether this is the turn with that file.
    bool isWith(const struct stat& file) const noexcept;

private:
    IniLockMark mark_;
    const dev_t device_;
    const ino_t inode_;
    FileTurn* next_ = nullptr;
};

// Whether a thread is inside of the INI files. It stands here and not with them for the catalogs, which must know it:
// who sets the install directory holds the lock of the catalogs and waits for that of an INI file, so a thread that
// holds the latter may not ask for the former.
#pragma once

// Lives as long as its thread holds the lock of an INI cache or of the list of caches.
class IniLockMark {
public:
    IniLockMark() noexcept { ++depth_; }
    ~IniLockMark() { --depth_; }
    IniLockMark(const IniLockMark&) = delete;
    IniLockMark& operator=(const IniLockMark&) = delete;

    // Whether the calling thread holds such a lock.
    static bool isSet() noexcept { return depth_ != 0; }

private:
    static constinit inline thread_local int depth_ = 0;
};

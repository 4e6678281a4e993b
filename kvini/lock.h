// How the locks of the INI caches are held.
#pragma once

#include <mutex>

#include "kvlib/critical_section.h"
#include "kvlib/ini_lock_mark.h"

// Holds the lock of a cache, or of a list of caches, and says so: no catalog may be opened meanwhile. Operations that
// may have a failure to report open the catalog first.
class IniLock {
public:
    explicit IniLock(KvSemaphore& lock) : hold_(lock) {}

private:
    IniLockMark mark_;
    std::lock_guard<KvSemaphore> hold_;
};

// The INI files of a task: users of one file share one cache.
#pragma once

#include <cstdint>
#include <string_view>

#include "kvini/cache.h"
#include "kvlib/critical_section.h"
#include "kvlib/kv_array.h"

// The caches of a task, one per resolved path.
class KvIniFileCacheList {
public:
    KvIniFileCacheList();

    // The cache of the file that `name` leads to, shared with its other users or loaded with `flags` now; null with the
    // reason recorded when there is no such file. A configuration file of the ODBC environment must exist, whatever
    // the flags. The list owns the cache; the caller hands it back with close.
    [[nodiscard]] KvIniFileCache* open(const char* name, std::uint32_t flags);

    // Takes back one open; the last one destroys the cache. Null is ignored.
    void close(KvIniFileCache* cache);

private:
    // The cache of that path, new ones unloaded, counted for one more user; null when memory ran out.
    KvIniFileCache* share(std::string_view path);

    KvSemaphore lock_;  // never held while a cache's lock is waited for: the other files would wait as well
    KvArray caches_;    // in the order of creation
};

#include "kvini/cache_list.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <new>

#include "bos/errno_mapping.h"
#include "bos/file.h"
#include "kvini/lock.h"
#include "kvlib/error_report.h"

namespace {
constexpr std::uint32_t kResolveFlags = OpenFlag::kRecogniseNames | OpenFlag::kResolveOnly;
}  // namespace

KvIniFileCacheList::KvIniFileCacheList() {
    caches_.setFlag(kArrayOwnsElements, true);
}

KvIniFileCache* KvIniFileCacheList::findShared(std::string_view path) const {
    for (std::uint64_t i = 0; i < caches_.count(); ++i) {
        auto* cache = static_cast<KvIniFileCache*>(caches_.at(i));
        if (cache->hasPath(path)) {
            return cache;
        }
    }
    return nullptr;
}

KvIniFileCache* KvIniFileCacheList::open(const char* name, std::uint32_t flags) try {
    openLibraryCatalog();
    char path[kPathSize];
    int ignored = 0;
    if (std::strlen(name) >= sizeof path) {
        bosMapError(ENAMETOOLONG, name);
        return nullptr;
    }
    std::strcpy(path, name);
    if (bosFileOpen(path, kResolveFlags, &ignored) != 0) {
        return nullptr;
    }
    const IniLock hold(lock_);
    if (KvIniFileCache* shared = findShared(path)) {
        shared->loadIfNotLoaded(name, flags);
        shared->incrementUseCount();
        return shared;
    }
    auto cache = std::make_unique<KvIniFileCache>();
    if (cache->bosKvIniOpen(name, flags) != 0 || caches_.addAtIndex(cache.get(), caches_.count()) != 0) {
        return nullptr;
    }
    return cache.release();
} catch (const std::bad_alloc&) {
    ramAddMemoryError();
    return nullptr;
}

void KvIniFileCacheList::close(KvIniFileCache* cache) {
    if (cache == nullptr) {
        return;
    }
    const IniLock hold(lock_);
    if (cache->decrementUseCount() != 0) {
        return;
    }
    for (std::uint64_t i = 0; i < caches_.count(); ++i) {
        if (caches_.at(i) == cache) {
            caches_.deleteAtIndex(i);
            return;
        }
    }
}

#include "kvini/cache_list.h"

#include <cerrno>
#include <memory>

#include "bos/errno_mapping.h"
#include "bos/file.h"
#include "kvini/lock.h"
#include "kvlib/library_text.h"
#include "kvlib/out_of_memory.h"
#include "kvlib/text.h"

namespace {
constexpr std::uint32_t kResolveFlags = OpenFlag::kRecogniseNames | OpenFlag::kResolveOnly;
}  // namespace

KvIniFileCacheList::KvIniFileCacheList() {
    caches_.setFlag(kArrayOwnsElements, true);
}

KvIniFileCache* KvIniFileCacheList::share(std::string_view path) {
    const IniLock hold(lock_);
    for (std::uint64_t i = 0; i < caches_.count(); ++i) {
        auto* cache = static_cast<KvIniFileCache*>(caches_.at(i));
        if (cache->listedPath_ == path) {
            ++cache->useCount_;
            return cache;
        }
    }
    auto cache = std::make_unique<KvIniFileCache>();
    cache->listedPath_ = path;
    return caches_.addAtIndex(cache.get(), caches_.count()) == 0 ? cache.release() : nullptr;
}

KvIniFileCache* KvIniFileCacheList::open(const char* name, std::uint32_t flags) {
    openLibraryCatalog();
    char path[kPathSize];
    int ignored = 0;
    if (!copyWhole(path, sizeof path, name)) {
        bosMapError(ENAMETOOLONG, name);
        return nullptr;
    }
    if (bosFileOpen(path, kResolveFlags, &ignored) != 0) {
        return nullptr;
    }
    return orMemoryError<KvIniFileCache*>(nullptr, [&]() -> KvIniFileCache* {
        const auto giveBack = [this](KvIniFileCache* cache) { close(cache); };
        std::unique_ptr<KvIniFileCache, decltype(giveBack)> cache(share(path), giveBack);
        return cache && cache->openShared(name, flags) ? cache.release() : nullptr;
    });
}

void KvIniFileCacheList::close(KvIniFileCache* cache) {
    if (cache == nullptr) {
        return;
    }
    const IniLock hold(lock_);
    if (--cache->useCount_ != 0) {
        return;
    }
    for (std::uint64_t i = 0; i < caches_.count(); ++i) {
        if (caches_.at(i) == cache) {
            caches_.deleteAtIndex(i);
            return;
        }
    }
}

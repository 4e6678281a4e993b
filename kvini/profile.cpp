#include "kvini/profile.h"

#include <mutex>
#include <new>
#include <string>

#include "bos/file.h"
#include "kvini/cache_list.h"
#include "kvlib/error_report.h"
#include "kvlib/narrow_text.h"
#include "kvlib/out_of_memory.h"
#include "kvlib/per_thread_data.h"
#include "kvlib/text.h"

namespace {

constinit KvSemaphore ListCreation;

// The task's list, made when it is first needed; null after recording that memory ran out.
KvIniFileCacheList* taskFiles() {
    const std::lock_guard hold(ListCreation);
    auto* list = static_cast<KvIniFileCacheList*>(mdsGetPerTaskData(kTaskSlotIniFiles));
    if (list == nullptr) {
        list = new (std::nothrow) KvIniFileCacheList;
        if (list == nullptr) {
            ramAddMemoryError();
        }
        mdsSetPerTaskData(kTaskSlotIniFiles, list);
    }
    return list;
}

KvIniFileCache* openCache(const char* file, std::uint32_t flags) {
    KvIniFileCacheList* list = taskFiles();
    return list == nullptr ? nullptr : list->open(file, flags);
}

// The result of a read without a file.
unsigned long useDefault(const char* defaultText, char* buffer, unsigned long size) {
    const char* text = defaultText == nullptr ? "" : defaultText;
    if (size == 0) {
        return 0;
    }
    strCopy(buffer, size, text);
    return BUTSTLEN(buffer);
}

unsigned long readString(KvIniFileCache* cache, const char* section, const char* entry, const char* defaultText,
                         char* buffer, unsigned long size) {
    return cache == nullptr ? useDefault(defaultText, buffer, size)
                            : cache->bosGetProfileString(section, entry, defaultText, buffer, size);
}

int writeString(KvIniFileCache* cache, const char* section, const char* entry, const char* value) {
    return cache == nullptr ? 0 : cache->bosPutProfileString(section, entry, value);
}

std::uint32_t readInt(KvIniFileCache* cache, const char* section, const char* entry, std::uint32_t defaultValue) {
    return cache == nullptr ? defaultValue : cache->bosGetProfileInt(section, entry, defaultValue);
}

}  // namespace

unsigned long kvGetProfileString(const char* section, const char* entry, const char* defaultText, char* buffer,
                                 unsigned long size, const char* file) {
    return readString(openCache(file, 0), section, entry, defaultText, buffer, size);
}

unsigned long kvGetPrivateProfileString(const char* section, const char* entry, const char* defaultText, char* buffer,
                                        unsigned long size, const char* file) {
    const HeldIniCache cache(openCache(file, 0));
    return readString(cache.get(), section, entry, defaultText, buffer, size);
}

unsigned long kvGetPrivateProfileString(const char* section, const char* entry, const char* defaultText, char* buffer,
                                        unsigned long size, KvIniFileCache* cache) {
    return readString(cache, section, entry, defaultText, buffer, size);
}

unsigned long kvGetPrivateProfileStringW(const char16_t* section, const char16_t* entry, const char16_t* defaultText,
                                         char16_t* buffer, unsigned long size, const char16_t* file) {
    const unsigned long length = orMemoryError(0UL, [&] {
        const HeldIniCache cache(openCache(Narrow(file).get(), 0));
        if (cache) {
            return cache->bosGetProfileStringW(section, entry, defaultText, buffer, size);
        }
        if (size == 0) {
            return 0UL;
        }
        const std::u16string_view text = defaultText == nullptr ? u"" : defaultText;
        const std::size_t copied = text.copy(buffer, size - 1);
        buffer[copied] = u'\0';
        return copied;
    });
    if (length == 0 && size != 0) {
        *buffer = u'\0';
    }
    return length;
}

int kvWriteProfileString(const char* section, const char* entry, const char* value, const char* file) {
    return writeString(openCache(file, OpenFlag::kCreateMissing), section, entry, value);
}

int kvWritePrivateProfileString(const char* section, const char* entry, const char* value, const char* file) {
    const HeldIniCache cache(openCache(file, OpenFlag::kCreateMissing));
    return writeString(cache.get(), section, entry, value);
}

int kvWritePrivateProfileString(const char* section, const char* entry, const char* value, KvIniFileCache* cache) {
    return writeString(cache, section, entry, value);
}

int kvWritePrivateProfileStringW(const char16_t* section, const char16_t* entry, const char16_t* value,
                                 const char16_t* file) {
    return orMemoryError(0, [&] {
        return kvWritePrivateProfileString(Narrow(section).get(), Narrow(entry).get(), Narrow(value).get(),
                                           Narrow(file).get());
    });
}

std::uint32_t kvGetProfileInt(const char* section, const char* entry, std::uint32_t defaultValue, const char* file) {
    return readInt(openCache(file, 0), section, entry, defaultValue);
}

std::uint32_t kvGetPrivateProfileInt(const char* section, const char* entry, std::uint32_t defaultValue,
                                     const char* file) {
    const HeldIniCache cache(openCache(file, 0));
    return readInt(cache.get(), section, entry, defaultValue);
}

std::uint32_t kvGetPrivateProfileInt(const char* section, const char* entry, std::uint32_t defaultValue,
                                     KvIniFileCache* cache) {
    return readInt(cache, section, entry, defaultValue);
}

std::uint32_t kvGetPrivateProfileIntW(const char16_t* section, const char16_t* entry, std::uint32_t defaultValue,
                                      const char16_t* file) {
    return orMemoryError(defaultValue, [&] {
        return kvGetPrivateProfileInt(Narrow(section).get(), Narrow(entry).get(), defaultValue, Narrow(file).get());
    });
}

unsigned long kvGetPrivateProfileSection(const char* section, char* buffer, unsigned long size, const char* file) {
    KvIniFileCache* cache = openCache(file, 0);
    return cache == nullptr ? 0 : cache->bosGetProfileSection(section, buffer, size);
}

KvIniFileCache* kvProfileInit(const char* file) {
    return openCache(file, OpenFlag::kCreateMissing);
}

KvIniFileCache* kvPrivateProfileInit(const char* file) {
    return openCache(file, OpenFlag::kCreateMissing);
}

void kvPrivateProfileTerm(KvIniFileCache* cache) {
    KvIniFileCacheList* list = cache == nullptr ? nullptr : taskFiles();
    if (list != nullptr) {
        list->close(cache);
    }
}

unsigned long GetPrivateProfileString(const char* section, const char* entry, const char* defaultText, char* buffer,
                                      unsigned long size, const char* file) {
    KvIniFileCache cache;
    return cache.bosKvIniOpen(file, 0) != 0 ? 1 : cache.bosGetProfileString(section, entry, defaultText, buffer, size);
}

int WritePrivateProfileString(const char* section, const char* entry, const char* value, const char* file) {
    KvIniFileCache cache;
    return cache.bosKvIniOpen(file, OpenFlag::kCreateMissing) != 0 ? 1
                                                                   : cache.bosPutProfileString(section, entry, value);
}

// Reading and writing INI files by name, through the caches that all threads of the process share.
//
// The plain functions leave the file in memory, so that the next call only looks at its date and size; the private
// ones let it go again unless somebody else holds it. `file` is a configuration file's name or a path
// (docs/ini-format.md), and the lookups and updates are those of KvIniFileCache (kvini/cache.h). Readers fall
// back to their default when the file can't be opened; writers return 0 with the reason on the calling thread's current
// error list. Everything may be called from any thread.
#pragma once

#include <cstdint>
#include <memory>

#include "kvini/cache.h"

// A file that can't be opened yields `defaultText` (null means ""), cut to the buffer.
unsigned long kvGetProfileString(const char* section, const char* entry, const char* defaultText, char* buffer,
                                 unsigned long size, const char* file);
unsigned long kvGetPrivateProfileString(const char* section, const char* entry, const char* defaultText, char* buffer,
                                        unsigned long size, const char* file);
unsigned long kvGetPrivateProfileString(const char* section, const char* entry, const char* defaultText, char* buffer,
                                        unsigned long size, KvIniFileCache* cache);
unsigned long kvGetPrivateProfileStringW(const char16_t* section, const char16_t* entry, const char16_t* defaultText,
                                         char16_t* buffer, unsigned long size, const char16_t* file);

// Create the file when it does not exist, or no longer, except the files of the ODBC environment.
[[nodiscard]] int kvWriteProfileString(const char* section, const char* entry, const char* value, const char* file);
[[nodiscard]] int kvWritePrivateProfileString(const char* section, const char* entry, const char* value,
                                              const char* file);
[[nodiscard]] int kvWritePrivateProfileString(const char* section, const char* entry, const char* value,
                                              KvIniFileCache* cache);
[[nodiscard]] int kvWritePrivateProfileStringW(const char16_t* section, const char16_t* entry, const char16_t* value,
                                               const char16_t* file);

std::uint32_t kvGetProfileInt(const char* section, const char* entry, std::uint32_t defaultValue, const char* file);
std::uint32_t kvGetPrivateProfileInt(const char* section, const char* entry, std::uint32_t defaultValue,
                                     const char* file);
std::uint32_t kvGetPrivateProfileInt(const char* section, const char* entry, std::uint32_t defaultValue,
                                     KvIniFileCache* cache);
std::uint32_t kvGetPrivateProfileIntW(const char16_t* section, const char16_t* entry, std::uint32_t defaultValue,
                                      const char16_t* file);

// The keys of a section. Unlike the other private functions it leaves the file in memory: whoever lists keys reads
// their values next. Returns 0 with the buffer untouched when the file can't be opened.
unsigned long kvGetPrivateProfileSection(const char* section, char* buffer, unsigned long size, const char* file);

// A cache for many lookups, null on failure. The caller holds it until kvPrivateProfileTerm, which ignores null.
[[nodiscard]] KvIniFileCache* kvProfileInit(const char* file);
[[nodiscard]] KvIniFileCache* kvPrivateProfileInit(const char* file);
void kvPrivateProfileTerm(KvIniFileCache* cache);

// A cache that is handed back with this handle.
struct IniCacheRelease {
    void operator()(KvIniFileCache* cache) const { kvPrivateProfileTerm(cache); }
};
using HeldIniCache = std::unique_ptr<KvIniFileCache, IniCacheRelease>;

// The same for code written for another system: each call loads the file for itself. When it can't be loaded both
// return 1, the reader with its buffer untouched: callers of old were written against these results.
unsigned long GetPrivateProfileString(const char* section, const char* entry, const char* defaultText, char* buffer,
                                      unsigned long size, const char* file);
int WritePrivateProfileString(const char* section, const char* entry, const char* value, const char* file);

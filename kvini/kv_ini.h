// An INI file kept open for many lookups.
#pragma once

#include <cstdint>

#include "kvini/profile.h"

// Holds a cache from open to close. Reads of a KvIni without a file yield their defaults, writes fail; both record that
// no file is open. One KvIni belongs to one thread; several may share a file.
class KvIni {
public:
    // Holds `file`, created when it does not exist, in place of the one held before. Returns 0, or 1 with the reason
    // recorded.
    int open(const char* file);
    void close() { cache_.reset(); }
    bool validState() const noexcept { return cache_ != nullptr; }

    // Copies a value as kvGetPrivateProfileString does. Returns 0, or 1 without a file.
    int getEntry(const char* section, const char* key, char* buffer, unsigned long size, const char* defaultText) const;
    // The same, but returns the length as kvGetPrivateProfileString does.
    unsigned long getEntryWithLen(const char* section, const char* key, char* buffer, unsigned long size,
                                  const char* defaultText) const;
    // Reads a number; one that does not fit 16 bits counts as missing. Returns 0, or 1 without a file.
    int getEntry(const char* section, const char* key, std::int16_t& value, std::int16_t defaultValue) const;

    // Writes the section's entries as "key=value" texts, each with a terminating zero byte and one more at the end,
    // blanks around the keys dropped. Stops at the first entry that does not fit or when `size` runs out. Returns the
    // bytes written, the last zero included; 0 when `file` can't be opened. Needs no open.
    [[nodiscard]] static unsigned long getSectionWithValues(const char* section, char* buffer, unsigned long size,
                                                            const char* file);

    // Return 1 when written, else 0.
    [[nodiscard]] int writeEntry(const char* section, const char* key, const char* value);
    [[nodiscard]] int deleteEntry(const char* section, const char* key) { return writeEntry(section, key, nullptr); }

private:
    bool recordedState() const;

    HeldIniCache cache_;
};

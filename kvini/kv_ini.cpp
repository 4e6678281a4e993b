#include "kvini/kv_ini.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "bos/errno_mapping.h"
#include "kvlib/out_of_memory.h"

namespace {

constexpr unsigned long kValueSize = 2048;

// Blanks of the grammar: a line end or a vertical tab is part of a key.
std::string_view withoutBlanksAround(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t");
    const std::size_t end = text.find_last_not_of(" \t");
    return begin == std::string_view::npos ? std::string_view() : text.substr(begin, end - begin + 1);
}

// All keys of the section in the listed form, whatever their number.
std::vector<char> listedKeys(const char* section, const char* file) {
    for (std::vector<char> list(1024);; list.resize(list.size() * 2)) {
        const unsigned long length = kvGetPrivateProfileSection(section, list.data(), list.size(), file);
        if (length < list.size()) {
            list.resize(length);
            return list;
        }
    }
}

}  // namespace

int KvIni::open(const char* file) {
    cache_.reset(kvPrivateProfileInit(file));
    return validState() ? 0 : 1;
}

// validState, and records an error when there is no file.
bool KvIni::recordedState() const {
    if (!validState()) {
        bosMapError(EBADF, nullptr);
    }
    return validState();
}

int KvIni::getEntry(const char* section, const char* key, char* buffer, unsigned long size,
                    const char* defaultText) const {
    getEntryWithLen(section, key, buffer, size, defaultText);
    return recordedState() ? 0 : 1;
}

unsigned long KvIni::getEntryWithLen(const char* section, const char* key, char* buffer, unsigned long size,
                                     const char* defaultText) const {
    return kvGetPrivateProfileString(section, key, defaultText, buffer, size, cache_.get());
}

int KvIni::getEntry(const char* section, const char* key, std::int16_t& value, std::int16_t defaultValue) const {
    constexpr std::uint32_t kMissing = std::numeric_limits<std::uint32_t>::max();
    const std::uint32_t number = kvGetPrivateProfileInt(section, key, kMissing, cache_.get());
    const bool fits = number <= std::numeric_limits<std::int16_t>::max();
    value = fits ? static_cast<std::int16_t>(number) : defaultValue;
    return recordedState() ? 0 : 1;
}

unsigned long KvIni::getSectionWithValues(const char* section, char* buffer, unsigned long size, const char* file) {
    return orMemoryError(0UL, [&] {
        const std::vector<char> list = listedKeys(section, file);
        if (list.empty() || size == 0) {
            return 0UL;
        }
        unsigned long used = 0;
        // The last zero byte ends the list and belongs to no key.
        std::string_view keys(list.data(), list.size() - 1);
        while (!keys.empty()) {
            const std::string_view listed = keys.substr(0, keys.find('\0'));
            keys.remove_prefix(std::min(listed.size() + 1, keys.size()));
            const std::string key(withoutBlanksAround(listed));
            char value[kValueSize];
            const unsigned long length = kvGetPrivateProfileString(section, key.c_str(), "", value, sizeof value, file);
            const std::string entry = key + "=" + std::string(value, length);
            if (used + entry.size() + 2 > size) {
                break;
            }
            entry.copy(buffer + used, entry.size());
            used += entry.size();
            buffer[used++] = '\0';
        }
        buffer[used++] = '\0';
        return used;
    });
}

int KvIni::writeEntry(const char* section, const char* key, const char* value) {
    return recordedState() ? kvWritePrivateProfileString(section, key, value, cache_.get()) : 0;
}

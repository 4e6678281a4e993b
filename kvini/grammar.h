// The grammar of INI files, as pure functions on the text of a whole file. docs/ini-format.md tells it in full; each
// odd corner is a rule that other programs rely on. Nothing is copied but what a list returns, names may have any
// length, and zero bytes are ordinary characters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Offsets of a section in the text.
struct IniSection {
    std::size_t begin = 0;   // its "["
    std::size_t bodyAt = 0;  // right after its "]"
    std::size_t end = 0;     // the next "[", or the end of the text
};

// Offsets of an entry in the text.
struct IniEntry {
    std::size_t begin = 0;  // the key
    std::size_t valueBegin = 0;
    std::size_t valueEnd = 0;  // the line's "\n", or the end of the text
};

// True when the names are equal without regard to the case of ASCII letters, whatever the locale.
bool iniNamesEqual(std::string_view a, std::string_view b) noexcept;

// The first section of that name, or of that key in a section.
[[nodiscard]] std::optional<IniSection> findIniSection(std::string_view text, std::string_view name);
[[nodiscard]] std::optional<IniEntry> findIniEntry(std::string_view text, const IniSection& section,
                                                   std::string_view key);

// Writes the names of all sections to `buffer`, each with a terminating zero byte and one more at the end of the list;
// a list that does not fit is cut to `size` bytes, two zero bytes included. Returns the bytes written.
std::size_t listIniSections(std::string_view text, char* buffer, std::size_t size);

// Writes the section's keys in the same form. A list that does not fit is cut to `size` bytes and ends in one zero byte
// only: read no further than the count returned. Nothing when the section ends before its second line.
[[nodiscard]] std::optional<std::size_t> listIniKeys(std::string_view text, const IniSection& section, char* buffer,
                                                     std::size_t size);

// What an update did, in the order in which it is traced.
enum class IniChange { kNone, kEntryUpdated, kEntryDeleted, kEntryAdded, kSectionAdded, kSectionDeleted };

struct IniUpdate {
    std::string text;  // the whole new text
    IniChange change = IniChange::kNone;
};

// The text with `value` stored under `key` in `section`; without a value the entry is removed, without a key the
// section. May throw std::bad_alloc.
[[nodiscard]] IniUpdate updateIniText(std::string_view text, std::string_view section,
                                      std::optional<std::string_view> key, std::optional<std::string_view> value);

#include "installer/plain_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>
#include <unordered_set>

#include "installer/configuration.h"

namespace installer {

namespace {

using ByteTable = std::array<bool, std::numeric_limits<unsigned char>::max() + 1>;

// The bytes that no plain text has. What is a blank depends on the locale, for the library too.
ByteTable oddBytes() {
    ByteTable table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        const int character = static_cast<int>(byte);
        table[byte] = std::iscntrl(character) != 0 || (std::isspace(character) != 0 && character != ' ');
    }
    return table;
}

bool hasTwice(const std::vector<std::string_view>& names) {
    // Most sections have a few keys, of different lengths.
    constexpr std::size_t kFew = 12;
    if (names.size() <= kFew) {
        for (auto name = names.begin(); name != names.end(); ++name) {
            if (std::any_of(names.begin(), name, [name](std::string_view other) { return sameName(other, *name); })) {
                return true;
            }
        }
        return false;
    }
    std::unordered_set<std::string_view, decltype(&hashOfName), decltype(&sameName)> seen(names.size(), hashOfName,
                                                                                          sameName);
    return !std::all_of(names.begin(), names.end(),
                        [&seen](std::string_view name) { return seen.insert(name).second; });
}

// The name in a header; empty when that is not just a name in brackets.
std::string_view plainHeader(std::string_view line) {
    const std::string_view name = line.substr(1, line.find_first_of("[]", 1) - 1);
    return line.size() == name.size() + 2 && line.back() == ']' && trimmedView(name) == name ? name
                                                                                             : std::string_view();
}

// The key of a line; empty when there is none, or no "=".
std::string_view plainKey(std::string_view line) {
    const std::size_t equals = line.find('=');
    return equals == std::string_view::npos || line.front() == ' ' ? std::string_view()
                                                                   : trimmedView(line.substr(0, equals));
}

bool hasOnlyPlainLines(std::string_view text) {
    const ByteTable isOdd = oddBytes();
    std::vector<std::string_view> sections;
    std::vector<std::string_view> keys;
    for (std::string_view line : splitLines(text)) {
        // The last line may be open.
        line.remove_suffix(line.back() == '\n' ? 1 : 0);
        if (line.size() > kLongestLine ||
            std::any_of(line.begin(), line.end(), [&isOdd](char c) { return isOdd[static_cast<unsigned char>(c)]; })) {
            return false;
        }
        if (line.empty() || line.front() == '#' || line.front() == ';') {
            continue;
        }
        const bool isHeader = line.front() == '[';
        const std::string_view name = isHeader ? plainHeader(line) : plainKey(line);
        if (name.empty() || (!isHeader && sections.empty()) || (isHeader && hasTwice(keys))) {
            return false;
        }
        if (isHeader) {
            keys.clear();
        }
        (isHeader ? sections : keys).push_back(name);
    }
    return !hasTwice(keys) && !hasTwice(sections);
}

}  // namespace

bool isPlain(std::string_view text) {
    // Several parts of a window read, and write, one file after the other.
    thread_local std::string lastPlain;
    if (text != lastPlain) {
        if (!hasOnlyPlainLines(text)) {
            return false;
        }
        lastPlain = text;
    }
    return true;
}

std::string_view sectionIn(std::string_view plainText, std::string_view section) {
    for (const std::string_view part : splitSections(plainText)) {
        const IniLine header = parseFirstLine(part);
        if (header.kind == IniLineKind::kSection && sameName(header.name, section)) {
            return part;
        }
    }
    return {};
}

std::vector<IniLine> entriesIn(std::string_view plainText) {
    std::vector<IniLine> entries;
    for (const std::string_view line : splitLines(plainText)) {
        if (const IniLine parsed = parseIniLine(line); parsed.kind == IniLineKind::kEntry) {
            entries.push_back(parsed);
        }
    }
    return entries;
}

}  // namespace installer

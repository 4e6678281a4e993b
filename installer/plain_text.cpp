#include "installer/plain_text.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>

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

bool comesBefore(std::string_view a, std::string_view b) {
    const int order = strncasecmp(a.data(), b.data(), std::min(a.size(), b.size()));
    return order != 0 ? order < 0 : a.size() < b.size();
}

// Whether a name is there twice. May change their order.
bool hasTwice(std::vector<std::string_view>& names) {
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
    std::vector<std::size_t> hashes(names.size());
    std::transform(names.begin(), names.end(), hashes.begin(), hashOfName);
    std::sort(hashes.begin(), hashes.end());
    if (std::adjacent_find(hashes.begin(), hashes.end()) == hashes.end()) {
        return false;
    }
    std::sort(names.begin(), names.end(), comesBefore);
    return std::adjacent_find(names.begin(), names.end(), sameName) != names.end();
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
    std::size_t start = std::string_view::npos;
    for (std::size_t at = plainText.find('['); at != std::string_view::npos; at = plainText.find('[', at + 1)) {
        if (at > 0 && plainText[at - 1] != '\n') {
            continue;
        }
        if (start != std::string_view::npos) {
            return plainText.substr(start, at - start);
        }
        if (sameName(plainText.substr(at + 1, plainText.find(']', at) - at - 1), section)) {
            start = at;
        }
    }
    return start == std::string_view::npos ? std::string_view() : plainText.substr(start);
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

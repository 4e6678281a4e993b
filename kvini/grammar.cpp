#include "kvini/grammar.h"

#include <algorithm>
#include <cstring>

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

bool isCommentMark(char c) {
    return c == ';' || c == '#';
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The offset of `c` in [from, end), or `end`.
std::size_t find(std::string_view text, char c, std::size_t from, std::size_t end) {
    if (from >= end) {
        return end;
    }
    const void* found = std::memchr(text.data() + from, c, end - from);
    return found == nullptr ? end : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

std::size_t skipBlanks(std::string_view text, std::size_t at) {
    while (at < text.size() && isBlank(text[at])) {
        ++at;
    }
    return at;
}

// Walks over the headers of a text.
class HeaderScan {
public:
    explicit HeaderScan(std::string_view text) : text_(text) {}

    // Finds the next header. Its "[" stands at the start of the text, right after a line end, or right after the "]"
    // of the header before; every other "[" is text, those after ";" and "#" included.
    bool next() {
        for (;;) {
            const std::size_t open = find(text_, '[', at_, text_.size());
            if (open == text_.size()) {
                return false;
            }
            if (open == 0 || text_[open - 1] == '\n' || open == afterHeader_) {
                const std::size_t close = find(text_, ']', open, text_.size());
                open_ = open;
                at_ = afterHeader_ = close + 1;
                return close != text_.size();
            }
            at_ = open + 1;
        }
    }

    std::size_t begin() const { return open_; }
    std::size_t bodyAt() const { return at_; }
    std::string_view name() const { return text_.substr(open_ + 1, at_ - open_ - 2); }

private:
    std::string_view text_;
    std::size_t at_ = 0;
    std::size_t open_ = 0;
    std::size_t afterHeader_ = 0;
};

// Fills a buffer of which `reserved` bytes are kept for the end of the list.
class ListWriter {
public:
    ListWriter(char* buffer, std::size_t size, std::size_t reserved)
        : buffer_(buffer), size_(size), limit_(size < reserved ? 0 : size - reserved) {}

    bool isFull() const { return used_ >= limit_; }
    void put(std::string_view part) { used_ += part.copy(buffer_ + used_, limit_ - used_); }
    void endName() { put({"\0", 1}); }
    void finish(std::size_t zeros) {
        for (; zeros > 0 && used_ < size_; --zeros) {
            buffer_[used_++] = '\0';
        }
    }
    std::size_t used() const { return used_; }
    bool endsName() const { return used_ == 0 || buffer_[used_ - 1] == '\0'; }

private:
    char* buffer_;
    std::size_t size_;
    std::size_t limit_;
    std::size_t used_ = 0;
};

std::string entryLine(std::string_view key, std::string_view value) {
    return std::string(key).append("=").append(value).append("\n");
}

std::string header(std::string_view section) {
    return std::string("[").append(section).append("]\n");
}

std::string replaced(std::string_view text, std::size_t cutAt, std::size_t resumeAt, std::string_view inserted) {
    std::string result;
    result.reserve(text.size() + inserted.size());
    result.append(text.substr(0, cutAt)).append(inserted).append(text.substr(std::min(resumeAt, text.size())));
    return result;
}

}  // namespace

bool iniNamesEqual(std::string_view a, std::string_view b) noexcept {
    // From the end: the names of one file often begin alike.
    return a.size() == b.size() &&
           std::equal(a.rbegin(), a.rend(), b.rbegin(), [](char x, char y) { return x == y || lower(x) == lower(y); });
}

std::optional<IniSection> findIniSection(std::string_view text, std::string_view name) {
    HeaderScan scan(text);
    while (scan.next()) {
        if (iniNamesEqual(scan.name(), name)) {
            return IniSection{scan.begin(), scan.bodyAt(), find(text, '[', scan.bodyAt(), text.size())};
        }
    }
    return std::nullopt;
}

std::optional<IniEntry> findIniEntry(std::string_view text, const IniSection& section, std::string_view key) {
    std::size_t at = section.bodyAt;
    for (;;) {
        // The rest of the line, of a header or of an entry with its value, is done with.
        at = find(text, '\n', at, text.size());
        while (at < text.size() && text[at] == '\n') {
            ++at;
        }
        at = skipBlanks(text, at);
        // The section's end is a "[", wherever in its line: entries behind it belong to nobody.
        if (at >= section.end) {
            return std::nullopt;
        }
        if (isCommentMark(text[at])) {
            continue;
        }
        // The key runs to the next "=" even when that stands on a later line.
        const std::size_t equals = find(text, '=', at, section.end);
        if (equals == section.end) {
            return std::nullopt;
        }
        std::size_t keyEnd = equals;
        while (keyEnd > at && isBlank(text[keyEnd - 1])) {
            --keyEnd;
        }
        std::size_t valueBegin = equals;
        while (valueBegin < text.size() && (isBlank(text[valueBegin]) || text[valueBegin] == '=')) {
            ++valueBegin;
        }
        if (iniNamesEqual(text.substr(at, keyEnd - at), key)) {
            return IniEntry{at, valueBegin, find(text, '\n', valueBegin, text.size())};
        }
        at = valueBegin;
    }
}

std::size_t listIniSections(std::string_view text, char* buffer, std::size_t size) {
    ListWriter list(buffer, size, 2);
    HeaderScan scan(text);
    while (!list.isFull() && scan.next()) {
        list.put(scan.name());
        list.endName();
    }
    list.finish(list.endsName() ? 1 : 2);
    return list.used();
}

std::optional<std::size_t> listIniKeys(std::string_view text, const IniSection& section, char* buffer,
                                       std::size_t size) {
    std::size_t at = skipBlanks(text, find(text, '\n', section.bodyAt, section.end) + 1);
    if (at >= section.end) {
        return std::nullopt;
    }
    ListWriter list(buffer, size, 1);
    bool lineBegins = true;
    while (at < section.end && !list.isFull()) {
        const char c = text[at];
        if (c == '\n') {
            // Not copied: a line without "=" runs into the next key.
            lineBegins = true;
            ++at;
        } else if (c == '=' || (lineBegins && isCommentMark(c))) {
            if (c == '=') {
                list.endName();
            }
            at = find(text, '\n', at, section.end);
            lineBegins = false;
        } else {
            // Blanks before the "=" are kept, although a lookup ignores them.
            std::size_t end = at + 1;
            while (end < section.end && text[end] != '\n' && text[end] != '=') {
                ++end;
            }
            list.put(text.substr(at, end - at));
            lineBegins = false;
            at = end;
        }
    }
    list.finish(1);
    return list.used();
}

IniUpdate updateIniText(std::string_view text, std::string_view section, std::optional<std::string_view> key,
                        std::optional<std::string_view> value) {
    const std::optional<IniSection> found = findIniSection(text, section);
    if (!found) {
        if (!key || !value) {
            return {std::string(text)};
        }
        // No line end is added to a file that lacks its last one: the header then continues that line.
        return {replaced(text, text.size(), text.size(), header(section) + entryLine(*key, *value)),
                IniChange::kSectionAdded};
    }
    if (!key) {
        return {replaced(text, found->begin, found->end, ""), IniChange::kSectionDeleted};
    }
    if (const std::optional<IniEntry> entry = findIniEntry(text, *found, *key)) {
        const std::size_t resumeAt = entry->valueEnd + 1;
        return value ? IniUpdate{replaced(text, entry->begin, resumeAt, entryLine(*key, *value)),
                                 IniChange::kEntryUpdated}
                     : IniUpdate{replaced(text, entry->begin, resumeAt, ""), IniChange::kEntryDeleted};
    }
    if (!value) {
        return {std::string(text)};
    }
    // The header is written anew with a line end, and one character after the old one makes room for it, whatever it
    // is. Only a "\n" belongs there: any other character is lost.
    const std::string newHeader = header(section);
    return {replaced(text, found->begin, found->begin + newHeader.size(), newHeader + entryLine(*key, *value)),
            IniChange::kEntryAdded};
}

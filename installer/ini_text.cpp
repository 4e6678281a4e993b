#include "installer/ini_text.h"

#include <algorithm>
#include <cctype>
#include <numeric>

#include "installer/configuration.h"

namespace installer {

namespace {

constexpr std::string_view kLineEnd = "\n";

bool isBlank(const std::string& line) {
    return trimmedView(line).empty();
}

// The end of a line: "\n", "\r\n", or nothing for a last line that is open.
std::string_view endOfLine(std::string_view line) {
    if (line.ends_with("\r\n")) {
        return "\r\n";
    }
    return line.ends_with('\n') ? kLineEnd : std::string_view();
}

// The line with another value. A key that is spelled the same keeps the blanks that somebody put around it.
std::string withValue(const std::string& line, std::string_view key, std::string_view value) {
    const std::size_t equals = line.find('=');
    const std::string end(endOfLine(line));
    if (equals == std::string::npos || trimmed(line.substr(0, equals)) != key) {
        return std::string(key) + "=" + std::string(value) + end;
    }
    const std::size_t start = std::min(line.find_first_not_of(" \t", equals + 1), line.size() - end.size());
    return line.substr(0, start) + std::string(value) + end;
}

}  // namespace

std::size_t hashOfName(std::string_view name) {
    constexpr std::size_t kFactor = 31;
    return std::accumulate(name.begin(), name.end(), std::size_t{0}, [](std::size_t hash, char byte) {
        return hash * kFactor + static_cast<std::size_t>(std::tolower(static_cast<unsigned char>(byte)));
    });
}

IniLine parseIniLine(std::string_view line) {
    const std::string_view text = trimmedView(line);
    if (text.empty() || text.front() == '#' || text.front() == ';') {
        return {};
    }
    if (text.front() == '[') {
        return {IniLineKind::kSection, trimmedView(text.substr(1, text.find(']') - 1)), {}};
    }
    const std::size_t equals = std::min(text.find('='), text.size());
    return {IniLineKind::kEntry, trimmedView(text.substr(0, equals)),
            trimmedView(text.substr(std::min(equals + 1, text.size())))};
}

std::string asTheLibraryWrites(std::string_view text) {
    std::string written;
    for (const std::string_view line : splitLines(text)) {
        const IniLine parsed = parseIniLine(line);
        if (parsed.kind == IniLineKind::kSection) {
            written.append(written.empty() ? "[" : "\n[").append(parsed.name).append("]\n");
        } else if (parsed.kind == IniLineKind::kEntry) {
            written.append(parsed.name).append("=").append(parsed.value).append("\n");
        }
    }
    return written.empty() ? written : written + "\n";
}

std::vector<std::string_view> splitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(text.substr(0, size));
        text.remove_prefix(size);
    }
    return lines;
}

std::vector<std::string_view> splitSections(std::string_view text) {
    std::vector<std::string_view> sections;
    std::size_t begin = 0;
    // Only the first "[" of a line can begin a header.
    for (std::size_t at = text.find('['); at != std::string_view::npos; at = text.find('[', text.find('\n', at))) {
        const std::size_t line = at == 0 ? 0 : text.rfind('\n', at - 1) + 1;
        if (line > begin && trimmedView(text.substr(line, at - line)).empty()) {
            sections.push_back(text.substr(begin, line - begin));
            begin = line;
        }
    }
    if (begin < text.size()) {
        sections.push_back(text.substr(begin));
    }
    return sections;
}

IniLine parseFirstLine(std::string_view lines) {
    return parseIniLine(lines.substr(0, lines.find('\n')));
}

std::size_t findFirstLine(std::string_view text) {
    const std::vector<std::string_view> lines = splitLines(text);
    const auto first = std::find_if(lines.begin(), lines.end(), [](std::string_view line) {
        return parseIniLine(line).kind != IniLineKind::kNothing;
    });
    return first == lines.end() ? 0 : static_cast<std::size_t>(first - lines.begin()) + 1;
}

IniText::Line::Line(std::string_view lines) : text(lines) {
    const IniLine parsed = parseFirstLine(text);
    kind = parsed.kind;
    hash = kind == IniLineKind::kNothing ? 0 : hashOfName(parsed.name);
}

bool IniText::Line::isHeaderOf(std::string_view section, std::size_t sectionHash) const {
    return kind == IniLineKind::kSection && hash == sectionHash && sameName(parseFirstLine(text).name, section);
}

bool IniText::Line::isEntryOf(std::string_view key, std::size_t keyHash) const {
    return kind == IniLineKind::kEntry && hash == keyHash && sameName(parseIniLine(text).name, key);
}

IniText::IniText(std::string_view text) : lastIsOpen_(!text.empty() && text.back() != '\n') {
    const std::vector<std::string_view> sections = splitSections(text);
    lines_ = std::vector<Line>(sections.begin(), sections.end());
    if (lastIsOpen_) {
        // Until the text is asked for all lines are alike.
        const std::size_t first = text.find('\n');
        lines_.back().text += first == std::string_view::npos ? kLineEnd : endOfLine(text.substr(0, first + 1));
    }
}

std::string IniText::text() const {
    std::string text;
    for (const Line& line : lines_) {
        text += line.text;
    }
    if (lastIsOpen_ && !lines_.empty()) {
        text.resize(text.size() - endOfLine(lines_.back().text).size());
    }
    return text;
}

// The place of the section's first header; the number of lines when there is none.
std::size_t IniText::findHeader(std::string_view section) const {
    const std::size_t hash = hashOfName(section);
    const auto found =
        std::find_if(lines_.begin(), lines_.end(), [&](const Line& line) { return line.isHeaderOf(section, hash); });
    return static_cast<std::size_t>(found - lines_.begin());
}

// Takes what stands at `place` apart into lines; returns how many more there are now.
std::size_t IniText::open(std::size_t place) {
    const std::string text = lines_[place].text;
    const std::vector<std::string_view> split = splitLines(text);
    const std::vector<Line> lines(split.begin(), split.end());
    lines_[place] = lines.front();
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(place) + 1, lines.begin() + 1, lines.end());
    return lines.size() - 1;
}

// findHeader(), with the section taken apart, and the one before, to which a line that sets it off belongs.
std::size_t IniText::openSection(std::string_view section) {
    const std::size_t header = findHeader(section);
    if (header == lines_.size()) {
        return header;
    }
    open(header);
    return header > 0 ? header + open(header - 1) : header;
}

std::size_t IniText::endOf(std::size_t header) const {
    const auto next = std::find_if(lines_.begin() + static_cast<std::ptrdiff_t>(header) + 1, lines_.end(),
                                   [](const Line& line) { return line.kind == IniLineKind::kSection; });
    return static_cast<std::size_t>(next - lines_.begin());
}

// Adds a line, with the line end that the file has.
void IniText::insert(std::size_t place, const std::string& text) {
    const std::string end(lines_.empty() ? kLineEnd : endOfLine(lines_[place > 0 ? place - 1 : 0].text));
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(place), Line(text + end));
}

void IniText::set(std::string_view section, std::string_view key, std::string_view value) {
    const std::string entry = std::string(key) + "=" + std::string(value);
    const std::size_t header = openSection(section);
    if (header == lines_.size()) {
        if (!lines_.empty()) {
            open(lines_.size() - 1);
        }
        // Blank lines set it off as they do the sections before, so that removeSection() can take them away again.
        const bool endsBlank = !lines_.empty() && isBlank(lines_.back().text);
        if (!lines_.empty() && !endsBlank) {
            insert(lines_.size(), "");
        }
        insert(lines_.size(), "[" + std::string(section) + "]");
        insert(lines_.size(), entry);
        if (endsBlank) {
            insert(lines_.size(), "");
        }
        return;
    }
    const std::size_t hash = hashOfName(key);
    std::size_t last = header;
    const std::size_t end = endOf(header);
    for (std::size_t place = header + 1; place < end; ++place) {
        if (lines_[place].isEntryOf(key, hash)) {
            lines_[place] = Line(withValue(lines_[place].text, key, value));
            return;
        }
        if (lines_[place].kind == IniLineKind::kEntry) {
            last = place;
        }
    }
    insert(last + 1, entry);
}

bool IniText::removeKey(std::string_view section, std::string_view key) {
    const std::size_t header = openSection(section);
    if (header == lines_.size()) {
        return false;
    }
    const auto end = lines_.begin() + static_cast<std::ptrdiff_t>(endOf(header));
    const auto found =
        std::find_if(lines_.begin() + static_cast<std::ptrdiff_t>(header) + 1, end,
                     [key, hash = hashOfName(key)](const Line& line) { return line.isEntryOf(key, hash); });
    if (found == end) {
        return false;
    }
    lines_.erase(found);
    return true;
}

bool IniText::removeSection(std::string_view section) {
    const std::size_t header = openSection(section);
    if (header == lines_.size()) {
        return false;
    }
    const auto at = [this](std::size_t place) { return lines_.begin() + static_cast<std::ptrdiff_t>(place); };
    const auto end = at(endOf(header));
    lines_.erase(std::remove_if(at(header), end, [](const Line& line) { return line.kind != IniLineKind::kNothing; }),
                 end);
    const bool isSetOff = header > 0 && isBlank(lines_[header - 1].text);
    if (isSetOff && (header == lines_.size() || isBlank(lines_[header].text))) {
        lines_.erase(at(header - 1));
    }
    return true;
}

}  // namespace installer

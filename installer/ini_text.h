// The text of a configuration file, changed line by line: whatever a change does not name stays the same byte for byte,
// comments, blank lines, line ends and lines that nobody understands included. docs/careful-writing.md tells the rules.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace installer {

// What the installer library makes of a line: it takes no notice of blanks at both ends and around the first "=".
enum class IniLineKind { kNothing, kSection, kEntry };
struct IniLine {
    IniLineKind kind = IniLineKind::kNothing;  // Blank lines and comments.
    std::string_view name;                     // Of the section, or the key.
    std::string_view value;
};
// The result points into `line`.
IniLine parseIniLine(std::string_view line);

// The same for names that differ in case only.
std::size_t hashOfName(std::string_view name);

class IniText {
public:
    explicit IniText(std::string_view text);

    // Gives the first `key` of the first `section` the value. What is not there is added: a key behind the last one of
    // its section, a section at the end.
    void set(std::string_view section, std::string_view key, std::string_view value);
    // Both remove the first, and return whether there was one. Comments stay; with a section goes a blank line that set
    // it off.
    bool removeKey(std::string_view section, std::string_view key);
    bool removeSection(std::string_view section);

    std::string text() const;

private:
    // A line, or a section that no change has looked into yet. What it begins with is found out once: each change looks
    // through all of them.
    struct Line {
        explicit Line(std::string_view lines);
        bool isHeaderOf(std::string_view section, std::size_t sectionHash) const;
        bool isEntryOf(std::string_view key, std::size_t keyHash) const;

        std::string text;  // With its end.
        IniLineKind kind;
        std::size_t hash;  // Of its name, whose case does not count.
    };

    std::size_t findHeader(std::string_view section) const;
    std::size_t open(std::size_t place);
    std::size_t openSection(std::string_view section);
    std::size_t endOf(std::size_t header) const;
    void insert(std::size_t place, const std::string& text);

    std::vector<Line> lines_;
    bool lastIsOpen_;  // The last line has no end.
};

// What the installer library writes when it has read the text, as long as no line is too long for it. Each line says
// the same to it wherever it stands, but for the section that it is in.
std::string asTheLibraryWrites(std::string_view text);

// The lines of a text, with their ends.
std::vector<std::string_view> splitLines(std::string_view text);

// The same for the sections, each with its header; the first is what stands before the first header, if anything does.
std::vector<std::string_view> splitSections(std::string_view text);

// What the first of these lines says.
IniLine parseFirstLine(std::string_view lines);

// The number of the first line that says something, from 1; 0 when none does. The library reads a file only when that
// line begins a section.
std::size_t findFirstLine(std::string_view text);

}  // namespace installer

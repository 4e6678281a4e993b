// A configuration file as the driver manager reads it, with the places of everything in it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace doctor {

struct IniEntry {
    std::string key;
    std::string value;
    std::size_t line;
    bool hasEquals;
};

struct IniSection {
    std::string name;
    std::size_t line;
    bool isClosed;  // It has its "]".
    std::vector<IniEntry> entries{};

    // The first of the name, which is the one that counts; null without one.
    [[nodiscard]] const IniEntry* find(std::string_view key) const;
    // Its value; empty without one.
    [[nodiscard]] std::string value(std::string_view key) const;
};

struct IniView {
    std::vector<IniSection> sections{};
    std::vector<IniEntry> strays{};  // Before the first section.

    [[nodiscard]] const IniSection* find(std::string_view name) const;
};

[[nodiscard]] IniView viewOf(std::string_view text);

// The number of the line for which the driver manager reads nothing of the text: the first that says something must
// begin with "[". 0 when it reads it.
[[nodiscard]] std::size_t refusedLine(std::string_view text);

// That of the names which is most like `name`; empty when none is much like it. What differs in nothing but case and
// blanks comes first. With `hasParts` a name may have another around it, such as a version.
[[nodiscard]] std::string nearest(std::string_view name, const std::vector<std::string>& names, bool hasParts = true);

}  // namespace doctor

// Texts of configuration files that the ODBC installer library and we read in the same way, whatever is asked of them.
// docs/installer-library.md has the rules and what they leave out; a fuzz target holds them against the library.
#pragma once

#include <string_view>
#include <vector>

#include "installer/ini_text.h"

namespace installer {

// Whether the text has no line that anybody could read in more ways than one: only lines, of which the last may be
// open, that are empty, comments, "[section]" and "key=value", none of them too long, no control character, and no name
// twice. Then parseIniLine() says of each line what the library makes of it. What is a control character depends on the
// locale, which has to be set before. The last plain text is kept, and known again at once.
[[nodiscard]] bool isPlain(std::string_view text);

// The lines of `section` in a plain text, its header included; empty when there is none. They are a plain text
// themselves, in which the library finds of that section what it finds in the whole.
[[nodiscard]] std::string_view sectionIn(std::string_view plainText, std::string_view section);

// Keys and values in a part of a plain text, in its order.
[[nodiscard]] std::vector<IniLine> entriesIn(std::string_view plainText);

}  // namespace installer

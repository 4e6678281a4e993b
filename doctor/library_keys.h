// Which settings a driver knows, as far as it can be found out without connecting.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace doctor {

// Of the keys, in lower case, those that are no text in the library's bytes, be it of one, two or four bytes a letter,
// whatever the case. A driver can't know a key whose name it does not hold.
[[nodiscard]] std::set<std::string> keysNotIn(std::string_view library, const std::set<std::string>& keys);

// The keys that the driver of this name describes (ODBCINSTGetProperties, by the setup library); none when it has no
// description or takes too long for it. Asked in a process of its own.
[[nodiscard]] std::vector<std::string> describedKeys(const std::string& driver);

}  // namespace doctor

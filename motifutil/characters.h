// The characters of texts in the encoding of the locale.
#pragma once

#include <string>
#include <vector>

struct Character {
    wchar_t value;  // 0 for a byte that is none.
    std::string bytes;
};
// A text in its characters, none of whose bytes gets lost.
[[nodiscard]] std::vector<Character> split(const std::string& text);

// The same as values; bytes that are no characters stand for themselves.
[[nodiscard]] std::wstring charactersOf(const std::string& text);
// Values as bytes; those that the locale has no bytes for are left out.
[[nodiscard]] std::string bytesOf(const std::wstring& characters);

// Whether the character is of East Asia, where a line may end between most of them. An input method types it.
[[nodiscard]] bool isEastAsian(wchar_t character);

// In lower case, for comparisons.
[[nodiscard]] std::wstring lowerCase(const std::string& text);
[[nodiscard]] wchar_t lowerCase(wchar_t character);

#include "motifutil/characters.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cwchar>
#include <cwctype>
#include <iterator>
#include <utility>

std::vector<Character> split(const std::string& text) {
    std::vector<Character> characters;
    std::mbstate_t state{};
    for (std::size_t place = 0; place < text.size();) {
        wchar_t value = 0;
        std::size_t length = std::mbrtowc(&value, &text[place], text.size() - place, &state);
        if (length == 0 || length > text.size() - place) {
            value = 0;
            length = 1;
            state = {};
        }
        characters.push_back({value, text.substr(place, length)});
        place += length;
    }
    return characters;
}

std::wstring charactersOf(const std::string& text) {
    std::wstring characters;
    for (const Character& character : split(text)) {
        characters += character.value != 0 ? character.value
                                           : static_cast<wchar_t>(static_cast<unsigned char>(character.bytes.front()));
    }
    return characters;
}

std::string bytesOf(const std::wstring& characters) {
    std::string bytes;
    for (const wchar_t character : characters) {
        std::array<char, MB_LEN_MAX> buffer{};
        std::mbstate_t state{};
        const std::size_t length = std::wcrtomb(buffer.data(), character, &state);
        bytes.append(buffer.data(), length <= buffer.size() ? length : 0);
    }
    return bytes;
}

bool isEastAsian(wchar_t character) {
    // Radicals to Hangul, compatibility ideographs and forms, full and half width, and the planes of ideographs.
    constexpr std::pair<wchar_t, wchar_t> kRanges[] = {
        {0x2E80, 0xD7FF}, {0xF900, 0xFAFF}, {0xFE30, 0xFE4F}, {0xFF00, 0xFFEF}, {0x20000, 0x3FFFF}};
    return std::any_of(std::begin(kRanges), std::end(kRanges), [character](const auto& range) {
        return character >= range.first && character <= range.second;
    });
}

std::wstring lowerCase(const std::string& text) {
    std::wstring characters = charactersOf(text);
    for (wchar_t& character : characters) {
        character = lowerCase(character);
    }
    return characters;
}

wchar_t lowerCase(wchar_t character) {
    return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(character)));
}

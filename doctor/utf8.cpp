#include "doctor/utf8.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <array>

namespace doctor {

namespace {

constexpr std::size_t kLongestLetter = 4;

}  // namespace

std::int32_t nextLetter(std::string_view text, std::size_t& place) {
    const std::string_view rest = text.substr(place);
    const auto first = static_cast<unsigned char>(rest.front());
    const std::size_t size = std::min(rest.size(), first < 0xC0   ? 1U
                                                   : first < 0xE0 ? 2U
                                                   : first < 0xF0 ? 3U
                                                                  : kLongestLetter);
    UErrorCode error = U_ZERO_ERROR;
    std::array<UChar32, kLongestLetter> letters{};
    std::int32_t count = 0;
    std::array<UChar, kLongestLetter> units{};
    u_strFromUTF8(units.data(), units.size(), &count, rest.data(), static_cast<std::int32_t>(size), &error);
    if (U_SUCCESS(error)) {
        u_strToUTF32(letters.data(), letters.size(), nullptr, units.data(), count, &error);
    }
    place += U_SUCCESS(error) ? size : 1;
    return U_SUCCESS(error) ? letters.front() : -1;
}

}  // namespace doctor

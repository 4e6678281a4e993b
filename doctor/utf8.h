// UTF-8 in files that may hold anything.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace doctor {

// The letter at `place`, which moves behind it; below 0 for bytes that are no UTF-8.
[[nodiscard]] std::int32_t nextLetter(std::string_view text, std::size_t& place);

}  // namespace doctor

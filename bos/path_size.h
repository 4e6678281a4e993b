// The size of path buffers.
#pragma once

#include <cstddef>

// Size that every path buffer of the bos functions must have.
inline constexpr std::size_t kPathSize = 1025;

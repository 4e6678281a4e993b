// What the fuzz targets share.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// Takes the first line off `text`, without its end, as a C string sees it.
inline std::string takeLine(std::string_view& text) {
    const std::string line(text.substr(0, text.find('\n')));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line.c_str();
}

// Ends the run, which keeps the input, when an invariant does not hold.
inline void require(bool holds, const char* invariant) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", invariant);
        std::abort();
    }
}

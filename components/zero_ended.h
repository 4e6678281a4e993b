// Texts with a zero byte behind each: how the administrator, the program that asks libraries and its copies tell each
// other of paths and answers, and how answers are kept.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// What is told of a library: "ConfigDSN" or nothing, the version, the company.
inline constexpr std::size_t kAnswerTexts = 3;

inline void appendText(std::string& texts, std::string_view text) {
    texts.append(text).push_back('\0');
}

// What has no end yet is left out.
inline std::vector<std::string> splitTexts(std::string_view texts) {
    std::vector<std::string> parts;
    for (std::size_t end = 0; (end = texts.find('\0')) != std::string_view::npos; texts.remove_prefix(end + 1)) {
        parts.emplace_back(texts.substr(0, end));
    }
    return parts;
}

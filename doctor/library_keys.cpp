#include "doctor/library_keys.h"

#include <odbcinstext.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iterator>
#include <optional>

#include "installer/configuration.h"
#include "installer/driver_process.h"

namespace doctor {

namespace {

constexpr std::chrono::seconds kPatience(2);
constexpr std::size_t kMostKeys = 1000;

// The texts in it whose letters take `width` bytes each, in lower case.
std::string textsIn(std::string_view bytes, std::size_t width) {
    std::string texts;
    const auto isLetter = [&](std::size_t place) {
        return bytes[place] >= ' ' && bytes[place] <= '~' &&
               std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(place + 1),
                           bytes.begin() + static_cast<std::ptrdiff_t>(place + width),
                           [](char byte) { return byte == '\0'; });
    };
    bool isInside = false;
    for (std::size_t place = 0; place + width <= bytes.size();) {
        if (isLetter(place)) {
            const char letter = bytes[place];
            texts += letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
            place += width;
            isInside = true;
        } else {
            texts.append(isInside ? 1 : 0, '\n');
            isInside = false;
            ++place;
        }
    }
    texts += '\n';
    return texts;
}

}  // namespace

std::set<std::string> keysNotIn(std::string_view library, const std::set<std::string>& keys) {
    std::set<std::string> missing = keys;
    for (const std::size_t width : {std::size_t{1}, std::size_t{2}, std::size_t{4}}) {
        const std::string texts = textsIn(library, width);
        // The linker may keep a text as the end of a longer one.
        std::erase_if(missing, [&texts](const std::string& key) {
            return texts.find(key + '\n') != std::string::npos || texts.find(key + '=') != std::string::npos;
        });
    }
    return missing;
}

std::vector<std::string> describedKeys(const std::string& driver) {
    DriverProcess process([&driver] {
        std::string name = driver;
        HODBCINSTPROPERTY properties = nullptr;
        std::string keys;
        // Freed with the process.
        if (ODBCINSTConstructProperties(name.data(), &properties) != ODBCINST_SUCCESS) {
            return keys;
        }
        std::size_t count = 0;
        for (const ODBCINSTPROPERTY* one = properties; one != nullptr && count < kMostKeys; one = one->pNext, ++count) {
            keys += installer::trimmed({one->szName, strnlen(one->szName, sizeof one->szName)}) + '\n';
        }
        return keys;
    });
    const std::optional<DriverProcess::End> end = process.waitForEnd(kPatience);
    std::vector<std::string> keys;
    std::string_view rest = end && end->answer ? std::string_view(*end->answer) : std::string_view();
    while (!rest.empty()) {
        const std::size_t length = rest.find('\n');
        keys.emplace_back(rest.substr(0, length));
        rest.remove_prefix(length + 1);
    }
    return keys;
}

}  // namespace doctor

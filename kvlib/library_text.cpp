#include "kvlib/library_text.h"

#include <charconv>
#include <iterator>
#include <mutex>
#include <string_view>

#include "kvlib/catalog.h"
#include "kvlib/ini_lock_mark.h"

void openLibraryCatalog() {
    if (IniLockMark::isSet()) {
        return;
    }
    const std::lock_guard hold(CritOpen);
    if (CatFD == invalidCatalog()) {
        char name[] = "vhutl\0\0";
        bosdllname(name);
        bosLoadResourceDLL(name, 0, nullptr, nullptr);
    }
}

std::uint32_t winGetString(char* buffer, std::uint32_t id) {
    openLibraryCatalog();
    std::int32_t length = LoadString(nullptr, id, buffer, kLibraryTextSize);
    // The lookup gives the number itself for a text that is missing.
    char digits[16];
    std::string_view number(digits, std::to_chars(digits, std::end(digits), static_cast<std::int32_t>(id)).ptr);
    if (length < 1 || number == buffer) {
        buffer[0] = '\0';
        return 0;
    }
    return static_cast<std::uint32_t>(length);
}

std::uint32_t winGetString(char16_t* buffer, std::uint32_t id) {
    char text[kLibraryTextSize];
    std::int32_t length = winGetString(text, id) == 0 ? 0 : LoadStringW(nullptr, id, buffer, kLibraryTextSize);
    if (length < 1) {
        buffer[0] = u'\0';
        return 0;
    }
    return static_cast<std::uint32_t>(length);
}

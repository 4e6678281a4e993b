#include "kvlib/catalog.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "kvlib/console.h"
#include "kvlib/debug_mask.h"
#include "kvlib/out_of_memory.h"
#include "kvlib/text.h"

constinit char InstallDirLocation[kInstallDirSize] = "";

// All of these are ready before the first constructor of somebody's static object, which may look up texts.
constinit KvCriticalSection CritOpen;
constinit KvCriticalSection CritCatalog;
constinit nl_catd CatFD = nullptr;

namespace {

// POSIX gives the invalid handle as a cast that no constant expression allows, so a constructor stores it.
class CatalogStart {
public:
    CatalogStart() { CatFD = invalidCatalog(); }
};
[[gnu::init_priority(101)]] CatalogStart Start;

constexpr const char* kFallbackLocale = "en_US";
constexpr int kMessageSet = 1;
constexpr std::int32_t kLongestWideText = 4096;

// Null when the variable leaves the choice to the next one.
const char* localeVariable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr || std::strcmp(value, "C") == 0 ? nullptr : value;
}

std::string chosenLocale() {
    const std::string_view current = std::setlocale(LC_MESSAGES, nullptr);
    if (current != "C") {
        return current.empty() ? kFallbackLocale : std::string(current);
    }
    for (const char* variable : {"LC_MESSAGES", "LANG"}) {
        if (const char* value = localeVariable(variable)) {
            return value;
        }
    }
    return kFallbackLocale;
}

void traceOpening(const char* hinst) {
    if (!debugEnabled(DebugBit::kCatalog)) {
        return;
    }
    const char* current = std::setlocale(LC_MESSAGES, nullptr);
    printOnConsole("OpenStrings: HINST=%s\n", hinst == nullptr ? "(null)" : hinst);
    printOnConsole("OpenStrings: Default LC_MESSAGES=%s\n", current);
    // On purpose the locale of the process once more and not the chosen one, which the path of catopen shows.
    printOnConsole("OpenStrings: Using LC_MESSAGES=%s\n", current);
}

nl_catd openForLocale(const std::string& file) {
    const std::string root = std::string(InstallDirLocation) + "/locale/";
    const auto openIn = [&](const std::string& locale) {
        return catopen((root + locale + "/LC_MESSAGES/" + file).c_str(), 0);
    };
    const nl_catd handle = openIn(chosenLocale());
    return handle != invalidCatalog() ? handle : openIn(kFallbackLocale);
}

std::int32_t lookUp(nl_catd handle, std::uint32_t id, char* buffer, std::int32_t size) {
    const std::string number = std::to_string(static_cast<std::int32_t>(id));
    const char* text = number.c_str();
    if (handle != invalidCatalog()) {
        text = catgets(handle, kMessageSet, static_cast<int>(id), text);
    }
    const std::string_view view = text;
    std::size_t length = 0;
    if (size >= 0) {
        // Without a size the buffer is trusted.
        length = copyCut(buffer, size == 0 ? view.size() + 1 : static_cast<std::size_t>(size), view);
    }
    if (debugEnabled(DebugBit::kCatalog)) {
        printOnConsole("LoadStringFromOpenFile: idResource=%s\n", number.c_str());
        printOnConsole("LoadStringFromOpenFile: Lookup returns: %s\n", size < 0 ? "" : buffer);
    }
    return static_cast<std::int32_t>(length);
}

// Converts `text` from the code page of the locale. Returns the units written to `result`, or -1 when it can't be
// converted or does not fit.
std::int32_t fillWithUtf16(const char* text, std::int32_t length, char16_t* result, std::int32_t capacity) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open(nullptr, &status), &ucnv_close);
    if (U_FAILURE(status)) {
        return -1;
    }
    char16_t* end = result;
    ucnv_toUnicode(converter.get(), &end, result + capacity, &text, text + length, nullptr, /*flush=*/1, &status);
    return U_FAILURE(status) ? -1 : static_cast<std::int32_t>(end - result);
}

}  // namespace

nl_catd OpenStrings(const char* hinst, const char* name) {
    traceOpening(hinst);
    // A catalog that there is no memory to open is missing like any other.
    return orFailure(invalidCatalog(), [=] {
        return openForLocale(name != nullptr ? name : std::string(hinst == nullptr ? "" : hinst) + ".mo");
    });
}

void CloseStrings(nl_catd handle) {
    if (handle != invalidCatalog()) {
        catclose(handle);
    }
}

std::int32_t LoadStringFromOpenFile(nl_catd handle, std::uint32_t id, char* buffer, std::int32_t size) {
    const std::lock_guard hold(CritCatalog);
    return lookUp(handle, id, buffer, size);
}

// Its lookups are traced under the name of LoadStringFromOpenFile: readers of a trace know lookups by that name.
std::int32_t LoadString(const char* /*hinst*/, std::uint32_t id, char* buffer, std::int32_t size) {
    const std::lock_guard hold(CritCatalog);
    return lookUp(CatFD, id, buffer, size);
}

std::int32_t LoadStringW(const char* hinst, std::uint32_t id, char16_t* buffer, std::int32_t size) {
    const std::int32_t units = size == 0 ? kLongestWideText : std::min(size, kLongestWideText);
    char text[kLongestWideText];
    const std::int32_t length = LoadString(hinst, id, text, units);
    if (length < 1) {
        return length;
    }
    std::int32_t written = fillWithUtf16(text, length, buffer, units - 1);
    if (written < 0) {
        constexpr std::u16string_view kFailed = u"Failed!";
        written = std::min(static_cast<std::int32_t>(kFailed.size()), units - 1);
        std::copy_n(kFailed.data(), written, buffer);
    }
    buffer[written] = u'\0';
    return written;
}

std::int32_t bosLoadResourceDLL(const char* hinst, int /*ignored*/, void* /*ignoredResult*/, std::uint32_t* useCount) {
    const std::lock_guard hold(CritOpen);
    if (useCount != nullptr) {
        ++*useCount;
    }
    if (CatFD == invalidCatalog()) {
        const nl_catd opened = OpenStrings(hinst, nullptr);
        const std::lock_guard holdLookups(CritCatalog);
        CatFD = opened;
    }
    return 0;
}

std::int32_t bosFreeResourceDLL(void* /*ignored*/, std::uint32_t* useCount) {
    const std::lock_guard hold(CritOpen);
    if (useCount != nullptr && *useCount != 0) {
        --*useCount;
    }
    if (useCount == nullptr || *useCount == 0) {
        const std::lock_guard holdLookups(CritCatalog);
        CloseStrings(CatFD);
        CatFD = invalidCatalog();
    }
    return 0;
}

void bosdllname(char* name) {
    std::strcat(name, "23");
}

// The INI cache: lines with a section, a key and a value, then the text of the file.
#include <fstream>
#include <sstream>
#include <vector>

#include "kvini/cache.h"
#include "kvini/grammar.h"
#include "kvini/install_dir.h"
#include "kvlib/text.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr std::size_t kSmallSizes = 8;
constexpr std::size_t kListSize = 5000;  // beyond the longest input
constexpr const char* kNone = "(none)";

std::string lookUp(KvIniFileCache& cache, const char* section, const char* entry, std::size_t size = kListSize) {
    std::vector<char> buffer(size);
    const unsigned long length = cache.bosGetProfileString(section, entry, kNone, buffer.data(), size);
    require(length <= size, "a result fits its buffer");
    return {buffer.data(), length};
}

std::vector<std::string> names(KvIniFileCache& cache, const char* section) {
    std::vector<std::string> result;
    std::istringstream list(lookUp(cache, section, nullptr));
    for (std::string name; std::getline(list, name, '\0');) {
        result.push_back(name);
    }
    return result;
}

// Whatever can be reached by the lists.
std::string allEntries(KvIniFileCache& cache) {
    std::string entries;
    for (const std::string& section : names(cache, nullptr)) {
        for (const std::string& key : names(cache, section.c_str())) {
            entries += section + '\n' + key + '\n' + lookUp(cache, section.c_str(), key.c_str()) + '\n';
        }
    }
    return entries;
}

bool isPlain(const std::string& name) {
    return !name.empty() && name.find_first_of("=[];#\r\t ") == std::string::npos;
}

// A header that is not closed takes in what is appended, and so does an open line.
bool canBeAppendedTo(std::string_view text) {
    const std::size_t open = text.rfind('[');
    return (text.empty() || text.back() == '\n') &&
           (open == std::string_view::npos || text.find(']', open) != std::string_view::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    // As installed: without a catalog every operation looks for it.
    static const std::string catalog = folder.makeCatalog("locale/en_US/LC_MESSAGES/vhutl23.mo", {{1, "text"}});
    static const bool ready = bosSetInstallDir(folder.path().c_str()) == 0;
    const std::string file = folder.path("file.ini");
    std::string_view text = asText(data, size);
    const std::string section = takeLine(text);
    const std::string key = takeLine(text);
    const std::string value = takeLine(text);
    std::ofstream(file, std::ios::binary) << text;

    KvIniFileCache cache;
    require(ready && cache.bosKvIniOpen(file.c_str(), 0) == 0, "a file can be loaded");
    for (std::size_t small = 0; small < kSmallSizes; ++small) {
        lookUp(cache, section.c_str(), key.c_str(), small);
        lookUp(cache, section.c_str(), nullptr, small);
        lookUp(cache, nullptr, nullptr, small);
    }
    char16_t wide[20];
    cache.bosGetProfileInt(section.c_str(), key.c_str(), 0);
    cache.bosGetProfileStringW(toUtf16(section, kCPLocale).c_str(), nullptr, nullptr, wide, std::size(wide));

    // A zero byte in a name looks like its end.
    const std::vector<std::string> sections = names(cache, nullptr);
    const auto isSection = [&](const std::string& name) { return iniNamesEqual(name, section); };
    const bool known = text.find('\0') == std::string_view::npos && std::ranges::any_of(sections, isSection);
    const bool isReadBack = isPlain(section) && isPlain(key) && !value.empty() && value.size() < 2048 &&
                            std::string_view(" \t=").find(value.front()) == std::string_view::npos &&
                            (known || canBeAppendedTo(text));
    require(cache.bosPutProfileString(section.c_str(), key.c_str(), value.c_str()) == 1, "an update is written");
    require(!isReadBack || lookUp(cache, section.c_str(), key.c_str()) == value, "a value written is read back");
    KvIniFileCache fresh;
    require(fresh.bosKvIniOpen(file.c_str(), 0) == 0 && allEntries(fresh) == allEntries(cache),
            "memory and file agree");

    require(cache.bosPutProfileString(section.c_str(), key.c_str(), nullptr) == 1, "an entry is removed");
    require(cache.bosPutProfileString(section.c_str(), nullptr, nullptr) == 1, "a section is removed");
    return 0;
}

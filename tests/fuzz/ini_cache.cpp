// The INI cache: lines with a section, a key and a value, then the text of the file.
#include <algorithm>
#include <fstream>
#include <map>
#include <utility>
#include <vector>

#include "kvini/cache.h"
#include "kvini/grammar.h"
#include "kvini/install_dir.h"
#include "kvlib/text.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/temporary_folder.h"

namespace {

using Names = std::vector<std::string>;
using Entries = std::map<std::pair<std::string, std::string>, std::string>;

constexpr std::size_t kSmallSizes = 8;
constexpr std::size_t kListSize = 5000;  // beyond the longest input
constexpr const char* kNone = "(none)";

std::string lookUp(KvIniFileCache& cache, const char* section, const char* entry, std::size_t size = 2100) {
    std::vector<char> buffer(size);
    const unsigned long length = cache.bosGetProfileString(section, entry, kNone, buffer.data(), size);
    require(length <= size, "a result fits its buffer");
    return {buffer.data(), entry == nullptr || section == nullptr ? length : std::min(length, size - (size > 0))};
}

Names names(const std::string& list) {
    Names result;
    std::string_view rest = list;
    while (!rest.empty() && list != kNone) {
        result.emplace_back(rest.substr(0, rest.find('\0')));
        rest.remove_prefix(std::min(result.back().size() + 1, rest.size()));
    }
    return result;
}

std::string trimmed(const std::string& key) {
    const std::size_t begin = key.find_first_not_of(" \t");
    return begin == std::string::npos ? "" : key.substr(begin, key.find_last_not_of(" \t") + 1 - begin);
}

// Whatever can be reached by the lists.
Entries allEntries(KvIniFileCache& cache) {
    Entries entries;
    for (const std::string& section : names(lookUp(cache, nullptr, nullptr, kListSize))) {
        for (const std::string& key : names(lookUp(cache, section.c_str(), nullptr, kListSize))) {
            entries[{section, trimmed(key)}] = lookUp(cache, section.c_str(), trimmed(key).c_str());
        }
    }
    return entries;
}

bool isPlain(const std::string& name) {
    return !name.empty() && name == trimmed(name) && name.find_first_of("=[];#\r") == std::string::npos;
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
    cache.bosGetProfileInt(section.c_str(), key.c_str(), 0);
    std::vector<char16_t> wide(20);
    cache.bosGetProfileStringW(toUtf16(section, kCPLocale).c_str(), nullptr, nullptr, wide.data(), wide.size());

    const Names sections = names(lookUp(cache, nullptr, nullptr, kListSize));
    // A zero byte in a name looks like its end.
    const bool known = text.find('\0') == std::string_view::npos &&
                       std::any_of(sections.begin(), sections.end(),
                                   [&](const std::string& name) { return iniNamesEqual(name, section); });
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

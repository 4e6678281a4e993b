#include "installer/drivers.h"

#include <elf.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "bos/library.h"
#include "installer/configuration.h"
#include "installer/file_replacement.h"
#include "installer/ini_text.h"
#include "installer/plain_text.h"

// Where the library has its system's files: what the command "odbcinst -j" shows. Only the library's own programs have
// declarations of them.
extern "C" char* odbcinst_system_file_path(char* buffer);
extern "C" char* odbcinst_system_file_name(char* buffer);

namespace installer {
namespace {

constexpr bool kIsWide = sizeof(void*) == 8;

// Whether the library is there, and not one for programs of 32 bits. What else it is the loader finds out.
bool isUsable(const std::string& library) {
    const std::string path = locateLibrary(library.c_str());
    if (path.empty()) {
        return false;
    }
    std::array<char, EI_CLASS + 1> head{};
    std::ifstream(path, std::ios::binary).read(head.data(), head.size());
    return std::memcmp(head.data(), ELFMAG, SELFMAG) != 0 || head[EI_CLASS] != ELFCLASS32;
}

std::string contents(const std::string& path) {
    FileText file;
    return readFile(path, file) ? file.text : std::string();
}

// What the library says of drivers. It reads its files, the system's and the user's, for each value; as long as their
// texts are those of the last time, so is what it makes of them.
class DriverValues {
public:
    std::string value(const std::string& driver, const std::string& key, std::size_t size) {
        const char* home = std::getenv("HOME");
        std::string systemText = contents(driverFilePath());
        std::string userText = contents(std::string(home == nullptr ? "/home" : home) + "/.odbcinst.ini");
        if (systemText != systemText_ || userText != userText_) {
            systemText_ = std::move(systemText);
            userText_ = std::move(userText);
            readPlain();
        }
        if (isPlain_) {
            const auto found = plain_.find(nameOf(driver, key));
            // The library cuts the values of drivers earlier than others, by a byte.
            if (found == plain_.end() || found->second.size() + 2 < size) {
                return found == plain_.end() ? "" : found->second;
            }
        }
        const std::tuple question{driver, key, size};
        auto value = known_.find(question);
        if (value == known_.end()) {
            value = known_.emplace(question, readValue(driver, key, kDriverFile, size)).first;
        }
        return value->second;
    }

private:
    static std::string nameOf(std::string_view section, std::string_view key) {
        return foldedName(section) + '\n' + foldedName(key);
    }
    // A single file, and a plain one, is read by ourselves, once for all drivers.
    void readPlain() {
        known_.clear();
        plain_.clear();
        isPlain_ = userText_.empty() && isPlain(systemText_);
        if (!isPlain_) {
            return;
        }
        std::string_view section;
        for (const std::string_view text : splitLines(systemText_)) {
            const IniLine line = parseIniLine(text);
            section = line.kind == IniLineKind::kSection ? line.name : section;
            if (line.kind == IniLineKind::kEntry) {
                plain_.emplace(nameOf(section, line.name), line.value);
            }
        }
    }

    std::string systemText_;
    std::string userText_;
    bool isPlain_ = false;
    std::unordered_map<std::string, std::string> plain_;
    std::map<std::tuple<std::string, std::string, std::size_t>, std::string> known_;
};

std::string driverValue(const std::string& driver, const std::string& key, std::size_t size) {
    static DriverValues values;
    return values.value(driver, key, size);
}

std::string libraryOf(const std::string& driver, const std::string& key, std::size_t size) {
    std::string library = driverValue(driver, key, size);
    if (!kIsWide || (!library.empty() && isUsable(library))) {
        return library;
    }
    const std::string wide = driverValue(driver, key + "64", size);
    return !wide.empty() && (library.empty() || isUsable(wide)) ? wide : library;
}

}  // namespace

std::string driverFilePath() {
    char folder[PATH_MAX + 1] = "";
    char name[PATH_MAX + 1] = "";
    return std::string(odbcinst_system_file_path(folder)) + "/" + odbcinst_system_file_name(name);
}

std::string driverLibrary(const std::string& driver, std::size_t size) {
    return libraryOf(driver, "Driver", size);
}

std::string setupLibrary(const std::string& driver) {
    return libraryOf(driver, "Setup", 1024);
}

}  // namespace installer

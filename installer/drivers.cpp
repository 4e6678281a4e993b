#include "installer/drivers.h"

#include <elf.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <tuple>
#include <utility>

#include "bos/library.h"
#include "installer/configuration.h"

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

// What the library reads of drivers: the system's file and the user's.
std::string driverTexts() {
    const char* home = std::getenv("HOME");
    std::string texts;
    for (const std::string& path :
         {driverFilePath(), std::string(home == nullptr ? "/home" : home) + "/.odbcinst.ini"}) {
        std::ifstream file(path, std::ios::binary);
        texts.append(std::istreambuf_iterator<char>(file), {}).push_back('\0');
    }
    return texts;
}

// A value of the driver file. The library reads all of that for each; as long as the texts are those of the last time,
// so is what it makes of them.
std::string driverValue(const std::string& driver, const std::string& key, std::size_t size) {
    static std::string lastTexts;
    static std::map<std::tuple<std::string, std::string, std::size_t>, std::string> known;
    if (std::string texts = driverTexts(); texts != lastTexts) {
        known.clear();
        lastTexts = std::move(texts);
    }
    const std::tuple question{driver, key, size};
    auto value = known.find(question);
    if (value == known.end()) {
        value = known.emplace(question, readValue(driver, key, kDriverFile, size)).first;
    }
    return value->second;
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

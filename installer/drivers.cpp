#include "installer/drivers.h"

#include <elf.h>

#include <array>
#include <climits>
#include <cstring>
#include <fstream>

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

std::string libraryOf(const std::string& driver, const std::string& key, std::size_t size) {
    std::string library = readValue(driver, key, kDriverFile, size);
    if (!kIsWide || (!library.empty() && isUsable(library))) {
        return library;
    }
    const std::string wide = readValue(driver, key + "64", kDriverFile, size);
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

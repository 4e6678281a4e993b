// The dynamic section of an ELF file (https://refspecs.linuxfoundation.org/elf/gabi4+/contents.html), as far as the
// loader goes by it.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace doctor {

struct NeededVersion {
    std::string library;
    std::string version;
};

struct ElfFile {
    enum Kind { kUnreadable, kOther, kOtherMachine, kLibrary } kind = kUnreadable;
    int error = 0;
    std::string machine{};
    std::vector<std::string> needed{};
    std::vector<NeededVersion> neededVersions{};
    std::set<std::string> versions{};   // That it defines.
    std::set<std::string> functions{};  // That it exports and whose names begin with SQL, Config or ODBCINST.
    std::string rpath{};
    std::string runpath{};
};

[[nodiscard]] ElfFile readElf(const std::string& path);

// The name of a machine in words: "64-bit x86".
[[nodiscard]] std::string machineName(unsigned machine, bool isWide);

}  // namespace doctor

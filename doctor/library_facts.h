// What the headers of a shared library say, and which of the libraries that it needs the loader would find. Nothing is
// loaded for it.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace doctor {

enum class LibraryKind { kMissing, kUnreadable, kNoLibrary, kOtherMachine, kLibrary };

struct LibraryFacts {
    LibraryKind kind = LibraryKind::kMissing;
    std::string path{};     // Empty for a bare name that is found nowhere.
    int error = 0;          // With kUnreadable, an errno.
    std::string machine{};  // With kOtherMachine, what it was made for, such as "32-bit x86".

    // Of those that it needs, itself or by another, what the loader does not find.
    struct Absent {
        std::string name;
        std::string neededBy;
        std::string elsewhere{};  // Where a library of that name was found all the same.
        std::string package{};    // Of Debian: that has it, by the machine's own list.
    };
    std::vector<Absent> absent{};
    struct AbsentVersion {
        std::string version;
        std::string library;  // That should have it.
        std::string neededBy;
    };
    std::vector<AbsentVersion> absentVersions{};
    // Those of ODBC that it exports, or has from a driver that it needs: the loader looks for functions in both.
    std::set<std::string> functions{};
    std::vector<std::string> driverFiles{};  // It, and the drivers that it needs.
    std::string loaderWords{};               // Why the loader refuses it, when nothing above says so.
    std::string missingSymbol{};             // The loader's words when a function that it calls is nowhere.

    // Keys of data sources that the driver does not know, in lower case, and keys that it does.
    std::set<std::string> foreignKeys{};
    std::vector<std::string> knownKeys{};
    bool isDescribed = false;  // It tells its keys itself.

    std::string elsewhere{};  // Where a library of its name is, when it is not where it is named.
    std::string package{};    // Of Debian: that has a library which is missing, by the machine's own list.
};

// Whether a library with these functions can connect.
[[nodiscard]] bool isDriver(const std::set<std::string>& functions);

// What programs of this machine are made for.
[[nodiscard]] std::string ownMachine();

// Directories in which libraries may lie that the loader does not search.
using Folders = std::vector<std::string>;

// The facts of the library. A bare name is looked for in `moduleFolder` first, as the driver manager does.
[[nodiscard]] LibraryFacts examineLibrary(const std::string& name, const std::string& moduleFolder,
                                          const Folders& otherFolders);

// The first library of the name in one of the folders that is made for this machine; empty when there is none.
[[nodiscard]] std::string findIn(const Folders& folders, const std::string& name);

// Where the loader finds a library by its bare name; empty when it does not.
[[nodiscard]] std::string findByLoader(const std::string& name);

}  // namespace doctor

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
    };
    std::vector<Absent> absent{};
    struct AbsentVersion {
        std::string version;
        std::string library;  // That should have it.
        std::string neededBy;
    };
    std::vector<AbsentVersion> absentVersions{};
    std::set<std::string> functions{};  // Those of ODBC that it exports.
    std::string loaderWords{};          // Why the loader refuses it, when nothing above says so.
    std::string missingSymbol{};        // The loader's words when a function that it calls is nowhere.
};

// What programs of this machine are made for.
[[nodiscard]] std::string ownMachine();

// Directories in which libraries may lie that the loader does not search.
using Folders = std::vector<std::string>;

// The facts of the library. A bare name is looked for in `moduleFolder` first, as the driver manager does.
[[nodiscard]] LibraryFacts examineLibrary(const std::string& name, const std::string& moduleFolder,
                                          const Folders& otherFolders);

// Where the loader finds a library by its bare name; empty when it does not.
[[nodiscard]] std::string findByLoader(const std::string& name);

}  // namespace doctor

// What an account's ODBC configuration consists of, as it was found: files, variables and libraries. Taken once
// (doctor/snapshot.h); everything that is said of it is worked out from this alone.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "doctor/connection_facts.h"
#include "doctor/library_facts.h"

namespace doctor {

struct ConfigFile {
    std::string path;
    int error = 0;  // An errno: why it can't be read. ENOENT for one that is not there.
    bool isRegular = true;
    unsigned owner = 0;
    unsigned mode = 0600;
    std::string text{};
};

// A driver manager's library, and the directories of configuration files that its text names.
struct DriverManager {
    std::string path;
    std::vector<std::string> folders;
};

struct Account {
    std::map<std::string, std::string> variables;
    std::string userName;
    std::string home;  // Of the password entry.
    unsigned user = 0;
    std::string systemFolder = "/etc";              // Where the driver manager looks when no variable says so.
    std::map<std::string, ConfigFile> files;        // By path; what is not here is not there.
    std::map<std::string, LibraryFacts> libraries;  // Drivers, by the name that a file gives them.
    std::map<std::string, LibraryFacts> setups;     // Setup libraries, in the same way.
    std::vector<DriverManager> managers;
    std::map<std::string, std::string> otherFiles;  // Other people's data sources: paths, and texts that can be read.
    std::optional<ConnectionFacts> connection;      // When one was tried.
    std::map<std::string, std::uint64_t> sizes;     // Of trace files, in bytes.
    std::map<std::string, int> writeErrors;         // The errno with which a trace file can't be written.
};

// Null when unset.
[[nodiscard]] const std::string* variable(const Account& account, const std::string& name);

// The files that the driver manager reads for this account.
[[nodiscard]] std::string userFile(const Account& account);
[[nodiscard]] std::string systemFile(const Account& account);
[[nodiscard]] std::string driverFile(const Account& account);
[[nodiscard]] std::string userDriverFile(const Account& account);

// Null for a file that is not there.
[[nodiscard]] const ConfigFile* findFile(const Account& account, const std::string& path);

}  // namespace doctor

// The drivers and data sources that the account's files hold.
#pragma once

#include <string>
#include <vector>

#include "doctor/account.h"
#include "doctor/ini_view.h"

namespace doctor {

struct Registered {
    std::string file;
    IniSection section;
};

// The sections of the driver files that stand for drivers; of one name the first, which counts.
[[nodiscard]] std::vector<Registered> registeredDrivers(const Account& account);

// The entry that names the driver's library, or its setup library with "Setup": the driver manager prefers the one for
// programs of 64 bits. Null without one.
[[nodiscard]] const IniEntry* libraryEntry(const IniSection& driver, const std::string& key);

// A file with data sources, of the person or the system.
struct DataSourceFile {
    std::string path;
    IniView view;
};
[[nodiscard]] std::vector<DataSourceFile> dataSourceFiles(const Account& account);

// Whether a section of such a file may be a data source.
[[nodiscard]] bool isDataSource(const IniSection& section);

// The libraries that the files name.
struct NamedLibraries {
    std::vector<std::string> drivers;
    std::vector<std::string> setups;
};
[[nodiscard]] NamedLibraries namedLibraries(const Account& account);

}  // namespace doctor

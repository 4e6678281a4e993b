// The drivers and data sources that the account's files hold.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "doctor/account.h"
#include "doctor/ini_view.h"

namespace doctor {

struct Registered {
    std::string file;
    IniSection section;
};

// Whether a file of this name holds drivers, as far as its name tells.
[[nodiscard]] bool isDriverListName(const std::string& path);

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

// The data source of this name that the driver manager takes, and its driver's library as a file names it; nothing when
// no section has the name.
struct DataSource {
    std::string file;
    IniSection section;
    std::string library;
};
[[nodiscard]] std::optional<DataSource> findDataSource(const Account& account, const std::string& name);
// The library of the driver that the section names; empty when no driver has that name.
[[nodiscard]] std::string libraryOf(const IniSection& dataSource, const std::vector<Registered>& drivers);

// The libraries that the files name.
struct NamedLibraries {
    std::vector<std::string> drivers;
    std::vector<std::string> setups;
};
[[nodiscard]] NamedLibraries namedLibraries(const Account& account);

}  // namespace doctor

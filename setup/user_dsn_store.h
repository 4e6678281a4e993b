// User data sources as they are stored: one section of ".odbc.ini" each, and a line in its list. GUI thread only: it
// works through the installer library.
#pragma once

#include <optional>
#include <string>

#include "setup/settings.h"

// Whether the list of data sources has the name, and whether a section has it or the list.
[[nodiscard]] bool isListed(const std::string& name);
[[nodiscard]] bool dataSourceExists(const std::string& name);
// All keys of the section, "Driver" included.
[[nodiscard]] Settings readDataSource(const std::string& name);

// What is wrong with a new name; nothing when it is right.
[[nodiscard]] std::optional<SetupFailure> checkName(const std::string& name);

// What is to become of a data source.
struct DataSourceChange {
    std::string storedName;  // Empty for a new data source.
    Settings stored;         // What that has now, as readDataSource() told.
    std::string name;        // Another data source of this name is replaced.
    std::string driver;
    Settings values;  // What changes; an empty value deletes its key. "DSN" and "Driver" are passed over.
};

// What the data source holds after the change, "Driver" included.
[[nodiscard]] Settings settingsAfter(const DataSourceChange& change);

// Stores a change, after checking it: writes and deletes what differs from `stored` and nothing else. A data source
// that gets a new name keeps its other keys. Returns what went wrong.
[[nodiscard]] std::optional<SetupFailure> saveDataSource(const DataSourceChange& change);

[[nodiscard]] std::optional<SetupFailure> deleteDataSource(const std::string& name);

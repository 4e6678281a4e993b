// A data source as it is stored, what may be stored, and how a change gets there. GUI thread only: it works through the
// installer library.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "installer/configuration.h"

// Keys with a meaning of their own.
inline constexpr const char* kNameKey = "DSN";
inline constexpr const char* kDriverKey = "Driver";
inline constexpr const char* kDescriptionKey = "Description";

// Why something could not be done.
struct SetupFailure {
    unsigned int code = 0;  // One of the ODBC_ERROR codes.
    std::string text;       // For the user.
    std::string key;        // The setting that is wrong; empty for the name and for everything else.
};

using Settings = std::vector<installer::Attribute>;

// The value of `key`, whose case does not count; null when it is not there.
const std::string* findValue(const Settings& settings, std::string_view key);
// The same with empty text for what is not there.
std::string valueOf(const Settings& settings, std::string_view key);
// Replaces the value of `key` or appends it. The key keeps the spelling that it has.
void setValue(Settings& settings, const std::string& key, const std::string& value);

// Without the blanks at both ends, which the configuration files do not keep.
std::string trimmed(std::string_view text);
// The same with line breaks, tabs and runs of blanks inside of it as one blank each.
std::string oneLine(std::string_view text);

// Whether the key names a data source, its driver or its file, and so is no setting.
bool isNamingKey(std::string_view key);

// Whether the key is one of a password: its value is never shown.
bool isPasswordKey(std::string_view key);

bool dataSourceExists(const std::string& name);
// All keys of the section, "Driver" included.
Settings readDataSource(const std::string& name);

// What is wrong with a new name, or with a setting that is to be stored; nothing when they are right.
std::optional<SetupFailure> checkName(const std::string& name);
std::optional<SetupFailure> checkSetting(const installer::Attribute& setting);
// The first thing that is wrong with any of them.
std::optional<SetupFailure> checkSettings(const Settings& settings);

// Makes the changes in `settings`: an empty value deletes its key, keys that name are passed over.
void applyChanges(const Settings& changes, Settings& settings);

// Writes the value of a key, or deletes it when the value is null. False when that failed.
using SettingWriter = std::function<bool(const std::string& key, const char* value)>;
// Deletes and writes what differs between the two, and nothing else. False at the first failure.
bool writeChanges(const Settings& present, const Settings& wanted, const SettingWriter& write);

// What is to become of a data source.
struct DataSourceChange {
    std::string storedName;  // Empty for a new data source.
    std::string name;        // Another data source of this name is replaced.
    std::string driver;
    Settings values;  // What changes; an empty value deletes its key. "DSN" and "Driver" are passed over.
};

// Stores a change, after checking it: writes and deletes what differs from the file and nothing else. A data source
// that gets a new name keeps its other keys. Returns what went wrong.
std::optional<SetupFailure> saveDataSource(const DataSourceChange& change);

std::optional<SetupFailure> removeDataSource(const std::string& name);

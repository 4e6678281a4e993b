// The settings of a data source: keys and values, what may be stored, and what a change of them writes. GUI thread
// only: the texts of failures come from the setup library's catalog.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
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
[[nodiscard]] const std::string* findValue(const Settings& settings, std::string_view key);
// The same with empty text for what is not there.
[[nodiscard]] std::string valueOf(const Settings& settings, std::string_view key);
// Replaces the value of `key` or appends it. The key keeps the spelling that it has.
void setValue(Settings& settings, const std::string& key, const std::string& value);

// Finds settings by their keys, whose case does not count; of equal ones the first. It takes no longer for thousands.
class SettingIndex {
public:
    SettingIndex() = default;
    explicit SettingIndex(const Settings& settings);
    // The place of `key`; nothing when it is not there.
    [[nodiscard]] std::optional<std::size_t> find(std::string_view key) const;
    // The next setting has this key. False when one before has it.
    bool add(std::string_view key);

private:
    std::unordered_map<std::string, std::size_t> places_;
    std::size_t size_ = 0;
};
// As the setValue() above, for settings that are all in the index.
void setValue(Settings& settings, SettingIndex& index, const std::string& key, const std::string& value);

// Whether the key names a data source, its driver or its file, and so is no setting.
[[nodiscard]] bool isNamingKey(std::string_view key);

// What is wrong with a setting that is to be stored; nothing when it is right.
[[nodiscard]] std::optional<SetupFailure> checkSetting(const installer::Attribute& setting);
// The first thing that is wrong with any of them.
[[nodiscard]] std::optional<SetupFailure> checkSettings(const Settings& settings);
// Whether the text holds what no name and no key may: a control character.
[[nodiscard]] bool hasControlCharacter(std::string_view text);

// Makes the changes in `settings`: an empty value deletes its key, keys that name are passed over.
void applyChanges(const Settings& changes, Settings& settings);

// Writes the value of a key, or deletes it when the value is null.
using SettingWriter = std::function<void(const std::string& key, const char* value)>;
// Deletes and writes what differs between the two, and nothing else.
void writeChanges(const Settings& present, const Settings& wanted, const SettingWriter& write);

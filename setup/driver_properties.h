// What a driver says of its own settings.
#pragma once

#include <optional>
#include <string>
#include <vector>

// How a setting is edited.
enum class PropertyKind {
    kText,
    kPassword,
    kFile,   // Text, with a dialog to choose a file.
    kMenu,   // One of the choices.
    kCombo,  // Text, with choices to pick from.
    kFixed,  // Shown and not edited.
    kHidden  // Not shown.
};

struct DriverProperty {
    std::string key;
    std::string defaultValue;
    PropertyKind kind = PropertyKind::kText;
    std::vector<std::string> choices;
    std::string help{};             // One line; empty when the driver says nothing.
    std::string label{};            // In the place of the words for its key; mostly empty.
    bool isPercentEncoded = false;  // The file has "%25" for "%" and "%2B" for "+", as in an address.
    bool isNeverStored = false;     // Of use for a test alone: the driver does not read it where it would be stored.
};

// Asks the driver's library in a process of its own (ODBCINSTGetProperties, odbcinstext.h). Nothing when it can't be
// loaded, can't tell, takes more than two seconds or ends its process. Keys that every data source has are left out,
// and so is what comes twice; user and password are added for a driver that names a server and no login.
[[nodiscard]] std::optional<std::vector<DriverProperty>> askDriver(const std::string& library);

// Where a setting stands in a dialog that has too many of them for one page.
enum class SettingGroup { kGeneral, kSecurity, kAdvanced };
SettingGroup groupOf(const DriverProperty& property);

// What most drivers understand, for a driver that can't tell.
std::vector<DriverProperty> commonProperties();

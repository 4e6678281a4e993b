// What is known of drivers that tell too little of themselves, or what is wrong: those that Debian has, by the name of
// their library.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "setup/driver_properties.h"

// The settings that the driver reads from a data source, one of the user or a file; nothing for a driver that is to be
// asked itself.
[[nodiscard]] std::optional<std::vector<DriverProperty>> knownProperties(const std::string& library, bool isFile);

// Names and explains the settings that a driver of ours describes by their keys alone.
void explain(const std::string& library, std::vector<DriverProperty>& described);

// Whether the driver reads a password as a part of an address: "%25" stands for "%" and "%2B" for "+".
[[nodiscard]] bool hasEncodedPasswords(const std::string& library);

// What is known of drivers that tell too little of themselves, or what is wrong: those that Debian has, by the name of
// their library.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "setup/driver_properties.h"

// The settings that the driver reads from a data source; nothing for a driver that is to be asked itself.
[[nodiscard]] std::optional<std::vector<DriverProperty>> knownProperties(const std::string& library);

// Where the driver manager opens the library: a bare name in its module directory first. The name itself when it is not
// there.
[[nodiscard]] std::string driverPath(const std::string& library);

// Whether the library that the driver manager would open is there.
[[nodiscard]] bool isDriverInstalled(const std::string& library);

// The Debian package that brings the library; empty when it is not known.
[[nodiscard]] std::string packageOf(const std::string& library);

// Where the libraries of drivers are.
#pragma once

#include <string>

// Where the driver manager opens the library: a bare name in its module directory first. The name itself when it is not
// there.
[[nodiscard]] std::string driverPath(const std::string& library);

// Whether the library that the driver manager would open is there.
[[nodiscard]] bool isDriverInstalled(const std::string& library);

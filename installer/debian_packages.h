// Which of Debian's packages bring the libraries of drivers, and those that drivers need.
#pragma once

#include <string>

namespace installer {

// The package that brings the library, by what its name begins with; empty when it is not known.
[[nodiscard]] std::string packageOf(const std::string& library);

// The driver that people more likely mean where the library is registered by a package and in none; empty when it is
// not known.
[[nodiscard]] std::string driverInsteadOf(const std::string& library);

}  // namespace installer

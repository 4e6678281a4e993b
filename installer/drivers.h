// The drivers that the driver file registers (installer/configuration.h lists them), and their libraries. GUI thread
// only.
#pragma once

#include <cstddef>
#include <string>

namespace installer {

// The system's driver file, the one that the installer library reads and writes: "odbcinst.ini" in the directory that
// ODBCSYSINI names, under the name in ODBCINSTINI.
[[nodiscard]] std::string driverFilePath();

// The libraries that the driver's section names: its own, at most `size` - 1 bytes of the name, and that which sets up
// its data sources; empty when it names none. Some distributions write the name of the library for programs of 64 bits
// in a key of its own, "Driver64" or "Setup64": that counts in such a program where "Driver" or "Setup" is missing, or
// names nothing that is found or nothing for it.
[[nodiscard]] std::string driverLibrary(const std::string& driver, std::size_t size = 1024);
[[nodiscard]] std::string setupLibrary(const std::string& driver);

}  // namespace installer

// Where the product is installed.
#pragma once

#include <cstdint>

// Sets InstallDirLocation (kvlib/catalog.h) from `dir`, or, when that is null, from the environment variable
// "VH_INSTALLDIR", else from entry "InstallDir" of section "ODBC" of ".odbc.ini", else of ".odbcinst.ini". A variable
// that is set but empty passes over ".odbc.ini" alone. Paths are cut to 1,024 bytes; white space and one "/" at the
// end are dropped. Returns 0 when the directory is known, 1 when it is empty. May be called again, from any thread.
std::uint32_t bosSetInstallDir(const char* dir);

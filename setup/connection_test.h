// Tries a data source before it is stored: connects through the driver manager and disconnects. GUI thread only.
#pragma once

#include <string>
#include <vector>

#include "setup/settings.h"

// A connection string for `driver` with these settings (ODBC SQLDriverConnect). What names or would write a data source
// is left out: only what the person typed counts.
std::string connectionString(const std::string& driver, const Settings& settings);

struct ConnectionOutcome {
    bool connected = false;
    // What driver and driver manager say, all records in their order, each whole and on one line; warnings after
    // success.
    std::vector<std::string> diagnostics;
};

// Connects without any prompt and disconnects. Returns when the driver does, which is asked to give up after some
// seconds. The string is wiped, since it may hold the password.
[[nodiscard]] ConnectionOutcome testConnection(std::string connectionString);

// How a data source is tried before it is stored.
#pragma once

#include <string>

#include "installer/connection_attempt.h"
#include "setup/settings.h"

// A connection string for `driver` with these settings (ODBC SQLDriverConnect). What names or would write a data source
// is left out: only what the person typed counts.
std::string connectionString(const std::string& driver, const Settings& settings);

// The data source `name` with these settings, as any program will use it: by its name, from a copy of the user's
// configuration that nobody else sees. `unstored` are settings that the program has to give itself.
ConnectionTest testOfDataSource(const std::string& name, const Settings& settings, const Settings& unstored);

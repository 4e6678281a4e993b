// Tries a data source before it is stored. GUI thread only.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "setup/driver_process.h"
#include "setup/settings.h"

// A connection string for `driver` with these settings (ODBC SQLDriverConnect). What names or would write a data source
// is left out: only what the person typed counts.
std::string connectionString(const std::string& driver, const Settings& settings);

// What is to be tried.
struct ConnectionTest {
    std::string connectionString;
    // The text of a configuration file of data sources that the driver is to read in the place of the user's; nothing
    // for that itself.
    std::optional<std::string> configuration{};
};

// The data source `name` with these settings, as any program will use it: by its name, from a copy of the user's
// configuration that nobody else sees. `unstored` are settings that the program has to give itself.
ConnectionTest testOfDataSource(const std::string& name, const Settings& settings, const Settings& unstored);

struct ConnectionOutcome {
    bool connected = false;
    // What driver and driver manager say, all records in their order, each whole and on one line; warnings after
    // success.
    std::vector<std::string> diagnostics;
    std::string server{};   // Product and version, when they are known.
    std::string printed{};  // What the driver wrote on the console.
    std::string crash{};    // How the driver ended its process; empty when it came to its end.
};

// A connection that is made, without any prompt, and closed again in a process of its own, which ends with this object.
class ConnectionAttempt {
public:
    // Throws std::bad_alloc when there can be no other process.
    explicit ConnectionAttempt(const ConnectionTest& test);

    // What came of it; nothing as long as it goes on.
    std::optional<ConnectionOutcome> outcome();
    // What the driver wrote on the console until then.
    const std::string& printed() const noexcept { return process_.printed(); }

private:
    DriverProcess process_;
};

// Tries a connection, as any program would make it. GUI thread only.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "installer/driver_process.h"

// What is to be tried.
struct ConnectionTest {
    std::string connectionString;
    // The text of a configuration file of data sources that the driver is to read in the place of the user's; nothing
    // for that itself.
    std::optional<std::string> configuration{};
};

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
    // The same, but waits for it; nothing when it takes longer than that.
    std::optional<ConnectionOutcome> waitForOutcome(std::chrono::milliseconds patience);
    // What the driver wrote on the console until then.
    const std::string& printed() const noexcept { return process_.printed(); }

private:
    DriverProcess process_;
};

// The value as it stands in a connection string (ODBC SQLDriverConnect).
[[nodiscard]] std::string connectionValue(const std::string& value);
// The same in braces, whatever it is.
[[nodiscard]] std::string bracedValue(const std::string& value);

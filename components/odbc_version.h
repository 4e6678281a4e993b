// The version of a driver that is not ours, which knows our identification functions not.
#pragma once

#include <optional>
#include <string>

// Asks the loaded library through its own ODBC functions, without a driver manager and without connecting; empty when
// it does not tell. Nothing for a library that has no such functions itself. What it allocates stays: some drivers are
// at their weakest when they free what was never used, and the process is to end soon.
[[nodiscard]] std::optional<std::string> odbcVersion(void* library);

// What is said when a configuration file could not be changed.
#pragma once

#include <string>

#include "installer/configuration_change.h"

// The file and the reason, in the words of the catalog "odbc.m" and of the system.
[[nodiscard]] std::string changeReport(const installer::ChangeFailure& failure);

// Settings that a driver does not read.
#pragma once

#include <set>
#include <string>

#include "doctor/account.h"
#include "doctor/finding.h"

namespace doctor {

void findKeyFaults(const Account& account, Findings& findings);

// The keys, in lower case, that data sources have for the driver of this library, without those of the driver manager.
[[nodiscard]] std::set<std::string> keysForLibrary(const Account& account, const std::string& library);

// Keys that many drivers have, as candidates for what was meant.
[[nodiscard]] const std::vector<std::string>& usualKeys();

}  // namespace doctor

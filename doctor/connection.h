// Connects to a data source as a program would, and looks at its server when that fails.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "doctor/account.h"

namespace doctor {

// Connects to the data source `name`, in a process of its own that is ended after `patience`. `progress` is told the
// seconds that went by, several times in each. Nothing when no section has the name.
[[nodiscard]] std::optional<ConnectionFacts> tryConnection(const Account& account, const std::string& name,
                                                           std::chrono::seconds patience,
                                                           const std::function<void(long)>& progress);

}  // namespace doctor

// What is wrong with an account, worked out from its snapshot alone.
#pragma once

#include <string>

#include "doctor/account.h"
#include "doctor/finding.h"

namespace doctor {

// All findings, errors first, of one severity those that explain others first. With a name those that concern the data
// source of that name.
[[nodiscard]] Findings diagnose(const Account& account, const std::string& name = {});

}  // namespace doctor

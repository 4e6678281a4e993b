// Drivers that can't be loaded, or are none, and second driver managers.
#pragma once

#include "doctor/account.h"
#include "doctor/finding.h"

namespace doctor {

void findDriverFaults(const Account& account, Findings& findings);

}  // namespace doctor

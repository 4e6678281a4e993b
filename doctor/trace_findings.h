// Call tracing that goes on, or that does not work.
#pragma once

#include "doctor/account.h"
#include "doctor/finding.h"

namespace doctor {

void findTraceFaults(const Account& account, Findings& findings);

}  // namespace doctor

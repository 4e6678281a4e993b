// Data sources that no program finds, or whose driver nobody finds.
#pragma once

#include "doctor/account.h"
#include "doctor/finding.h"

namespace doctor {

void findDataSourceFaults(const Account& account, Findings& findings);

// Why programs do not find the data source of this name; nothing when they do.
void findMissingName(const Account& account, const std::string& name, Findings& findings);

}  // namespace doctor

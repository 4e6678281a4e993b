// Which files are read, which are not, and lines that are not read as they were meant.
#pragma once

#include "doctor/account.h"
#include "doctor/finding.h"

namespace doctor {

void findFileFaults(const Account& account, Findings& findings);
void findLineFaults(const Account& account, Findings& findings);

}  // namespace doctor

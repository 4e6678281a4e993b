// Why a connection can't be made.
#pragma once

#include "doctor/account.h"
#include "doctor/driver_list.h"
#include "doctor/finding.h"

namespace doctor {

// What the account's connection to this data source tells; nothing when there was none, or it could be made.
void findConnectionFaults(const Account& account, const DataSource& source, Findings& findings);

}  // namespace doctor

// Looks at the account and the machine, once. Changes nothing; libraries are loaded by a process of their own.
#pragma once

#include "doctor/account.h"

namespace doctor {

[[nodiscard]] Account takeSnapshot();

}  // namespace doctor

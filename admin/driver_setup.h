// Calls a driver's setup library, the one place where a data source's own settings are changed. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <string>

#include "catalogs/message_numbers.h"

// The ODBC installer's entry points of a setup library (ODBC ConfigDSN), as the last call found them. The library is
// closed by then: they tell that there was a function, and must not be called.
using ConfigDsnFunction = int (*)(Widget parent, unsigned short request, const char* driver, const char* attributes);
using ConfigFileDsnFunction = int (*)(Widget parent, unsigned short request, const char* driver, const char* attributes,
                                      const char* fileName);
extern ConfigDsnFunction ConfigureDSN;
extern ConfigFileDsnFunction ConfigFileDSN;

// Request codes of the entry points.
inline constexpr short kAddDataSource = 1;
inline constexpr short kConfigureDataSource = 2;

// Reports that a driver has no setup library that can be used, with the command that gives it ours.
void reportWithoutSetup(Message::Number report, const std::string& driverName);

// Loads `setupLibrary`, calls its ConfigFileDSN when `dsnKind` is 1 and its ConfigDSN otherwise, with the main window
// as parent, and unloads it. `attributes` is a list of "key=value" strings, each terminated, with one more terminator
// at the end; null when adding. `fileName` is used for a file data source only. Returns when the driver's dialogs are
// done; a failure is reported in a dialog that names its class. The caller refreshes its page afterwards, in either
// case.
void callDynamic(const char* setupLibrary, short request, const char* driverName, const char* attributes, short dsnKind,
                 const char* fileName);

// The entry point of a driver setup library (ODBC ConfigDSN). It serves any driver: what it asks for comes from the driver.
#pragma once

#include <odbcinst.h>

// Adds, configures or removes (ODBC_ADD_DSN, ODBC_CONFIG_DSN, ODBC_REMOVE_DSN) the data source that "DSN=" in `attributes`
// names, in the configuration that SQLSetConfigMode selects, the user's when it selects both. `parent` is a realized Motif
// widget over which the dialog is shown; with null nothing is shown and the attributes are stored as they are. Returns false
// on failure, whose reason is posted for SQLInstallerError. Cancel is no failure. GUI thread only.
extern "C" __attribute__((visibility("default"))) BOOL ConfigDSN(HWND parent, WORD request, LPCSTR driver,
                                                                 LPCSTR attributes);

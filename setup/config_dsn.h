// The entry points of a driver setup library (ODBC ConfigDSN, ConfigFileDSN). They serve any driver: what is asked for
// comes from the driver.
#pragma once

#include <odbcinst.h>

// Adds, configures or removes (ODBC_ADD_DSN, ODBC_CONFIG_DSN, ODBC_REMOVE_DSN) the data source that "DSN=" in
// `attributes` names, in the configuration that SQLSetConfigMode selects, the user's when it selects both. `parent` is
// a realized Motif widget over which the dialog is shown; with null nothing is shown and the attributes are stored as
// they are. Returns false on failure, whose reason is posted for SQLInstallerError. Cancel is no failure. GUI thread
// only.
extern "C" __attribute__((visibility("default"))) BOOL ConfigDSN(HWND parent, WORD request, LPCSTR driver,
                                                                 LPCSTR attributes);

// Adds or configures (ODBC_ADD_DSN, ODBC_CONFIG_DSN) the file data source `fileName`, an absolute path to which ".dsn"
// is added when it has another end. "DSN" and "FILEDSN" in `attributes` mean nothing beside it, and passwords in them
// are stored only when the person asks for it in the dialog, so without a window not at all. Otherwise as ConfigDSN.
extern "C" __attribute__((visibility("default"))) BOOL ConfigFileDSN(HWND parent, WORD request, LPCSTR driver,
                                                                     LPCSTR attributes, LPCSTR fileName);

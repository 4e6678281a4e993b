// The functions by which a component says what it is, for a program that has loaded it (component_version.h tells of
// them). They need nothing but the C library: describe-component is started once for each driver.
#pragma once

// The version text of a loaded library; null when it has none. The text belongs to the library.
char* getVersion(void* handle);

// Whether a loaded library has the function that tells its version, and what the one that tells its company says; null
// when it has none.
bool hasVersion(void* handle);
char* getCompany(void* handle);

// A component without a version can't be supported: nobody could tell which one a report is about. That has always
// ended the process here; whoever started it at least learns which library to mend.
[[noreturn]] void endWithoutVersion(void* handle, const char* libraryName);

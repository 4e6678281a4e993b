// A file data source that is being made, from its name to the file: the full path, the connection string, the
// attributes, the writing. docs/file-dsn.md tells the formats. GUI thread only. A failed allocation throws
// std::bad_alloc, which ends in the out-of-memory report in the callback (guarded()).
#pragma once

#include <string>
#include <string_view>

// Fills `buffer`, of kFileDsnNameSize bytes, with the directory of file data sources, "/" at its end: as it was set by
// the user, else the install directory, else the home directory, else "./", where the program was started.
void getFileDSNDefaultDir(char* buffer);

// Completes FileDSNName to a full path ending in ".dsn". False, with FileDSNName unchanged, when there is none or the
// path would have more than 1,023 bytes.
[[nodiscard]] bool setFullPath();

// Whether nothing is there under this path. What can't be looked at may be a file that somebody needs, and a link that
// leads nowhere is there too: writing would make the file that it names, and deleting would leave that behind.
[[nodiscard]] bool isFreePath(const char* path);

// Builds the connection string in TempStr from the file data source's full path, the driver's name (null means "") and
// the typed attributes, one key=value on a line (null means ""). False, after an error dialog, when there is no full
// path.
[[nodiscard]] bool createArray(const char* driver, const char* attributeText);

// Makes `*list`, from malloc, an attribute list of the items in TempStr; null when there are none.
void getAdvancedArgumentString(char** list);

// Writes the driver (null means "") and the items of the connection string to the file data source `path`, which its
// owner alone may read when there is a password among them. The file is read again, since the installer library does
// not notice a full disk. False when something is missing in it: what does not fit into a line is left out, never cut.
[[nodiscard]] bool writeFileDsn(const std::string& path, const char* driver, const char* connectionString);

// The names of the attributes in the connection string whose braces hold a ";", separated by ", ": splitting at every
// ";" cuts them off there.
[[nodiscard]] std::string cutAttributes(std::string_view connectionString);

// Deletes the file. False when it could not be deleted.
[[nodiscard]] bool deleteFileDSN(const char* path);

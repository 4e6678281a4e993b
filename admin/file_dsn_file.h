// What becomes of a file data source that is being made: its full path, the connection string, the attributes, the
// file. docs/file-dsn.md tells the formats. GUI thread only. A failed allocation raises std::bad_alloc, which ends in
// the out-of-memory report in the callback (guarded()).
#pragma once

#include <Xm/Xm.h>

// Fills `buffer`, of kFileDsnNameSize bytes, with the directory of file data sources, "/" at its end: as it was set by
// the user, else the install directory, else the home directory, else "./", where the program was started.
void getFileDSNDefaultDir(char* buffer);

// Completes FileDSNName to a full path ending in ".dsn". False, with FileDSNName unchanged, when there is none or the
// path would have more than 1,023 bytes.
bool setFullPath();

// Whether the file `name`, which is FileDSNName, may be written now; FileDSNName is a full path afterwards. When not, a
// dialog was shown: an error, or the question whether to overwrite what is there, whose answers go on from there.
bool checkPerm(const char* name);

// OK of the overwrite question: deletes the file `path` and lets the driver make it anew. Attributes that were typed in
// the advanced dialog are not used then: they belong to a file that the administrator would have written itself.
void overwriteFileDSN(Widget widget, XtPointer path, XtPointer callData);
// Cancel of the overwrite question: lets the person choose another name.
void openSaveAsControl(Widget widget, XtPointer clientData, XtPointer callData);

// Builds the connection string in TempStr from the file data source's full path, the driver's name (null means "") and
// the typed attributes, one key=value on a line (null means ""). False, after an error dialog, when there is no full
// path.
bool createArray(const char* driver, const char* attributeText);

// Makes `*list`, from malloc, an attribute list of the items in TempStr; null when there are none.
void getAdvancedArgumentString(char** list);

// Writes the driver and the items of the connection string to the file FileDSNName; nothing unless checkPerm() allows
// it. What the installer library says of each key is not looked at, since it does not notice a full disk: the file is
// read again, and an error dialog tells when something is missing.
void writeDsnToFile(const char* connectionString);

// Deletes the file. False when it could not be deleted.
bool deleteFileDSN(const char* path);

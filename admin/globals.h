// The state of the whole program: one instance each, made at start-up, used on the GUI thread alone.
#pragma once

#include <Xm/Xm.h>

#include "kvlib/kv_string.h"
#include "motifutil/catalog_text.h"
#include "motifutil/message_dialog.h"

extern XtAppContext app_context;
// The connection to the X server.
extern Display* display;
// The main window's shell, parent of every message dialog and of every driver's setup dialog.
extern Widget ShODBCAdmin;
// The main window's Apply button, sensitive while there are changes that it would save.
extern Widget BtnApply;
// The tab code of the page in front: 'U', 'F', 'D', 'T' or 'A'.
extern unsigned char CurrentSelectedTab;
// The file selection dialog of the File DSN page.
extern Widget Fdialog;

// The driver chosen in the driver chooser, and the file name of the file data source being made or handled: as it was
// typed, later a full path. Null until there is one; from malloc, freed by freeGlobals().
extern char* CurrentDriver;
extern char* FileDSNName;
// The size of the buffer of a full path.
inline constexpr std::size_t kFileDsnNameSize = 1024;

// The attributes typed for the file data source: the whole text, or what follows its first line. It points into
// DsnInfoText, from malloc and freed by freeGlobals(), and is null when that is.
extern const char* DsnInfo;
extern char* DsnInfoText;

// Replaces one of these strings by a copy of `text`. Throws std::bad_alloc, with nothing changed.
void replaceText(char*& string, const char* text);

// What was decided in the File DSN wizard, set back when it opens.
// The advanced dialog was closed with OK.
extern bool IsAdvOptSet;
// The connection is to be tested before the file is made.
extern bool IsVerificationNeeded;
// There are typed attributes that the administrator writes itself.
extern bool IsEntriesmodified;

// What is being added or configured.
inline constexpr short kFileDataSource = 1;
inline constexpr short kUserDataSource = 2;
extern short DsnType;

// The connection string of the file data source being made.
extern KvString TempStr;

// Destroys the dialogs, frees the strings above and closes the catalog, each when it is there, and marks them as gone.
void freeGlobals();

// Ends the program with status 0, as a callback: nothing is saved.
[[noreturn]] void endProgram(Widget widget, XtPointer clientData, XtPointer callData);

// The administrator's own identification, as every component of the product gives it: version (8-bit and 16-bit) and
// company. Static texts.
extern "C" {
__attribute__((visibility("default"))) const char* getFileVersionString();
const char16_t* getFileVersionStringW();
const char* getCompanyNameString();
}

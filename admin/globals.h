// The state of the whole program: one instance each, made at start-up, used on the GUI thread alone.
#pragma once

#include <Xm/Xm.h>

#include "kvlib/kv_string.h"
#include "motifutil/catalog_text.h"
#include "motifutil/message_dialog.h"

inline constexpr const char* kAdministratorVersion = "05.30.0002 (B0023, U0021)";

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

// The driver chosen in the driver chooser; the file and the attributes of the file data source being made. Null until
// there is one; from malloc, freed by freeGlobals().
extern char* CurrentDriver;
extern char* FileDSNName;
extern char* DsnInfo;

// What is being added or configured.
inline constexpr short kFileDataSource = 1;
inline constexpr short kUserDataSource = 2;
extern short DsnType;

// The connection string of the file data source being made.
extern KvString TempStr;

// Destroys the dialogs, frees the strings above and closes the catalog, each when it is there, and marks them as gone.
void freeGlobals();

// The administrator's own identification, as every component of the product gives it: version (8-bit and 16-bit) and
// company. Static texts.
extern "C" {
__attribute__((visibility("default"))) const char* getFileVersionString();
const char16_t* getFileVersionStringW();
const char* getCompanyNameString();
}

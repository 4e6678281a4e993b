// The operations that pages call across one another.
#pragma once

#include <Xm/Xm.h>

// Opens the driver chooser to add a data source of this kind (1 file, 2 user).
void addDsn(short kind);

// Completes the adding of a data source with the driver chosen: calls the driver's setup library and refreshes the page.
// `attributes` is null or an attribute list for a file data source.
void finish(Widget widget, const char* attributes);

// Writes the trace settings, whether tracing is on or off; a write that fails is reported.
void Save_Trace();

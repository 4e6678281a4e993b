// Asking a running browser by properties of its window (docs/browser-remote-control.md). Both functions return 0, or -1
// on failure, and report nothing. GUI thread only: while a browser is asked, the caller waits for its answer without a
// time-out.
#pragma once

#include <cstddef>

#include "help/browser_info.h"

// 0 when the browser can be asked and one of its windows is on the display.
int WWHelp_Platform_CheckBrowserRunning(WWHelp_BrowserInfo* info);

// Asks the running browser to open the URL and waits for its answer. -1 when it refuses, goes away, or is not there.
int WWHelp_Platform_SendURL(WWHelp_BrowserInfo* info, const char* url, std::size_t length);

// From a URL to a browser that shows it: a running one is asked, and otherwise one is started. All functions return 0,
// or -1 on failure, before the layer is started and for null arguments; nothing is reported. GUI thread only.
#pragma once

#include <cstddef>

#include "help/browser_info.h"

int WWHelp_Comm_Startup();
int WWHelp_Comm_Shutdown();

// Finds the browser.
int WWHelp_Comm_SetDefaultBrowserInfo(WWHelp_BrowserInfo* info);

// All three forget the browser.
int WWHelp_Comm_NewBrowserInfo(WWHelp_BrowserInfo* info);
int WWHelp_Comm_DeleteBrowserInfo(WWHelp_BrowserInfo* info);
int WWHelp_Comm_ClearBrowserInfo(WWHelp_BrowserInfo* info);

// Shows a URL of `length` bytes; a help URL is wrapped into a script when the record says so.
int WWHelp_Comm_DisplayURL(WWHelp_BrowserInfo* info, const char* url, std::size_t length);
int WWHelp_Comm_DisplayHelpURL(WWHelp_BrowserInfo* info, const char* url, std::size_t length);

// Both of them, with `isHelp` non-zero for a help URL.
int private_WWHelp_Comm_SendURLOrLaunchWithURL(WWHelp_BrowserInfo* info, int isHelp, const char* url,
                                               std::size_t length);

// Copies `length` bytes into malloc'ed memory of the caller's, terminated beyond them. -1 for none.
int private_WWHelp_Comm_CopyURL(const char* url, std::size_t length, char** out, std::size_t* outLength);

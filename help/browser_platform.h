// Browsers on this platform: finding one on the disk and starting it. All functions return 0, or -1 on failure, and
// report nothing. GUI thread only.
#pragma once

#include <cstddef>

#include "help/browser_info.h"

int WWHelp_Platform_Startup();
int WWHelp_Platform_Shutdown();

// Finds the browser: the directories of PATH in their order, in each the known names in theirs, then known places. Runs
// it once with the argument "-remote" and waits for it. -1 when there is none.
int WWHelp_Platform_SetDefaultBrowserInfo(WWHelp_BrowserInfo* info);

// Starts the browser with the URL as its only argument and does not wait for it.
int WWHelp_Platform_LaunchWithURL(WWHelp_BrowserInfo* info, const char* url, std::size_t length);

// 0 when something is at `path`. The execute permission is not looked at: what can't be run fails when it is started.
int private_WWHelp_Platform_FileIsExecutable(const char* path);

// Runs `file` with the arguments that follow, up to a null, its standard output on /dev/null. With `wait` non-zero
// waits for it and returns 0 only when it ended with status 0 and wrote nothing to standard error; otherwise returns 0
// once the process was made. The temporary file for standard error stays behind when nobody waits.
int private_WWHelp_Platform_Command(int wait, const char* file, ...);

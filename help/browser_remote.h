// Asking a running browser by properties of its window (docs/browser-remote-control.md). The functions return 0, or -1
// on failure, and report nothing. GUI thread only: while a browser is asked, the caller waits for its answer without a
// time-out.
#pragma once

#include <X11/Xlib.h>

#include <cstddef>

#include "help/browser_info.h"

// 0 when the browser can be asked and one of its windows is on the display.
int WWHelp_Platform_CheckBrowserRunning(WWHelp_BrowserInfo* info);

// Asks the running browser to open the URL and waits for its answer. -1 when it refuses, goes away, or is not there.
int WWHelp_Platform_SendURL(WWHelp_BrowserInfo* info, const char* url, std::size_t length);

// The steps of both; `display` must survive X errors, for the window can go away between any two requests.

// The first window on the display that takes commands, or None.
Window private_WWHelp_Platform_FindMozillaWindow(Display* display, Atom versionAtom);

// Writes `signature` into the lock, after waiting until no other controller has it. -1 when the window goes away.
int private_WWHelp_Platform_LockMozillaWindow(Display* display, Window window, Atom versionAtom, Atom lockAtom,
                                              const char* signature);

// Waits until another controller has let the lock go. -1 when the window was destroyed meanwhile.
int private_WWHelp_Platform_WaitForPropertyDelete(Display* display, Window window, Atom lockAtom);

// Writes the command and waits for the browser's verdict: "1.." says that it is at work, "200" that it is done,
// anything else that it is not willing.
int private_WWHelp_Platform_SendMozillaRemoteCommand(Display* display, Window window, Atom commandAtom,
                                                     Atom responseAtom, const char* command);

// Deletes the lock when it still holds `signature`.
void private_WWHelp_Platform_UnlockMozillaWindow(Display* display, Window window, Atom lockAtom, const char* signature);

// Text properties of another program's window: type STRING, format 8. A window that has gone shows as one without
// properties, as long as X errors don't end the process. GUI thread only.
#pragma once

#include <X11/Xlib.h>

#include <cstddef>

// 0 when the window has the property, of whatever type; else -1.
int private_WWHelp_Platform_WindowPropertyExists(Display* display, Window window, Atom atom);

// Copies at most `size` - 1 bytes of the value, always terminated. -1 for a `size` below 2, and for a value that is
// missing, empty or no text.
int private_WWHelp_Platform_WindowPropertyGet(Display* display, Window window, Atom atom, char* buffer,
                                              std::size_t size);

// Writes the property; -1 when there is one already.
int private_WWHelp_Platform_WindowPropertyCreate(Display* display, Window window, Atom atom, const char* text);

// Deletes the property; -1 when there is none.
int private_WWHelp_Platform_WindowPropertyDestroy(Display* display, Window window, Atom atom);

// Writes the property over the one that may be there.
void writeWindowProperty(Display* display, Window window, Atom atom, const char* text);

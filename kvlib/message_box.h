// Message boxes of code that knows no window system: on this platform they are reports on the console.
#pragma once

#include <cstdint>

// Prints "caption:", line end, `text`, line end to standard output, or the text alone between two line ends when
// `caption` is null or `style` is 0. `window` is not used. Returns 2, the answer of a Cancel button.
int MessageBox(const void* window, const char* text, const char* caption, std::uint32_t style);

// The same, for code that serves programs with and without windows.
int guiMessageBox(const void* window, const char* text, const char* caption, std::uint32_t style);

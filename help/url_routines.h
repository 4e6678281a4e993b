// Help URLs as a browser wants them. All results are malloc'ed, terminated beyond their length, and belong to the
// caller. All functions return 0, or -1 when the result is empty or memory runs out; the outputs are set on success
// only.
#pragma once

#include <cstddef>

// Copies `length` bytes and writes " % & ' ? \ as "%" and two lower-case hexadecimal digits, so that the text can stand
// inside a JavaScript string.
int WWHelp_URL_EscapeForJavaScript(const char* in, std::size_t length, char** out, std::size_t* outLength);

// Replaces each "%" and the two characters after it by the byte that they spell; a "%" among the last two bytes is
// dropped.
int WWHelp_URL_Unescape(const char* in, std::size_t length, char** out, std::size_t* outLength);

// A script that shows `url` in a help frame that is already loaded, and otherwise writes a page with one link to it.
int WWHelp_URL_BuildSmartURL(const char* url, std::size_t length, char** out, std::size_t* outLength);

// The same with a script of the caller's for the case that no frame is loaded.
int private_WWHelp_URL_BuildSmartURLWithReset(const char* url, std::size_t length, const char* reset,
                                              std::size_t resetLength, char** out, std::size_t* outLength);

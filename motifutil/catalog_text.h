// The catalog of the texts on screen, and its texts as C++ strings.
#pragma once

#include <nl_types.h>

#include <initializer_list>
#include <string>

#include "catalogs/message_numbers.h"

// The open catalog "odbc.m" that every dialog reads, or the invalid handle (kvlib/catalog.h). The program that shows
// the dialogs opens and closes it; a setup library has its own.
extern nl_catd Rfile;

// The text with this number in `Rfile`, at most 511 bytes; the number as text when the catalog or the text is missing.
[[nodiscard]] std::string catalogText(Message::Number number);
// The same with what it is about in the places of "%1", "%2" and so on.
[[nodiscard]] std::string catalogText(Message::Number number, std::initializer_list<std::string> subjects);
// The same for a text of any catalog.
[[nodiscard]] std::string withSubjects(std::string text, std::initializer_list<std::string> subjects);

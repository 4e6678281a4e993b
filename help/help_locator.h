// From a help book and a topic to a page in a browser. GUI thread only.
#pragma once

#include <cstddef>

// Shows a topic of the book whose root directory stands under "HelpRootDirectory" in the book's section of
// "ODBCINST.INI". Without a root a line on standard output says so; a browser that can't be found or started is passed
// over in silence.
void kvDisplayHelp(const unsigned char* book, const unsigned char* topic);

// The same for the administrator's own book.
void showAdministratorHelp(const char* topic);

// Copies the root URL of a book, "File:///" and the directory as it is configured, into `*rootUrl`, a buffer of `size`
// bytes, cut where it does not fit. Returns 0; 1 when the book has no root, which is reported, and, without a report,
// when the platform's text can't be converted.
int kvFindHelpRoot(const unsigned char* book, unsigned char** rootUrl, std::size_t size);

// Shows a topic of the help tree in `directory`. Returns what WWHelp_Shutdown() does.
int kvDisplayHelp2(unsigned char* directory, unsigned char* context, unsigned char* topic);

// What a component says of itself: every library of the product exports a version and a company text. GUI thread only:
// the About information is shared.
//
// The exports are plain functions without arguments that return a static, zero-terminated text of the component's own:
// getFileVersionString and getCompanyNameString in 8-bit characters, getFileVersionStringW in 16-bit units.
#pragma once

#include <cstddef>

#include "motifutil/component_functions.h"

inline constexpr std::size_t kComponentTextSize = 1024;
inline constexpr std::size_t kShortTextSize = 50;

// What the About form of a setup dialog shows, filled by setAboutInfo().
extern char fileName[kComponentTextSize];
extern char fileDate[kShortTextSize];
extern char fileSize[20];
extern char CompanyName[kComponentTextSize];
extern char FileVersion[kComponentTextSize];
extern char compAddr1[kShortTextSize];
extern char compAddr2[kShortTextSize];

// Loads a library, copies its company and version into buffers of kComponentTextSize bytes, and unloads it. `flag`
// non-zero appends the product's library suffix to the name. A library that can't be loaded gives two empty texts and
// no report; one without a company gives an empty company. The version is mandatory: a library that is loaded and has
// none ends the process (SIGSEGV) after a line on standard error has named it; motifutil/component_inquiry.h asks
// libraries of whatever kind without that danger. With both buffers null the library stays
// loaded, and a fresh error list stays installed as the current one; it belongs to the thread from then on.
void getCompNameAndVersion(char* libraryName, char* companyOut, char* versionOut, int flag);

// Fills the About information for the component at `path`. Returns 0, or 1 when the file can't be examined: its date is
// then empty, and its size stays what it was.
int setAboutInfo(unsigned char* path);

// The modification date of a file as people of this locale write it (strftime "%x", at most 50 bytes with the
// terminator); empty for a date that can't be written.
void formatFileDate(std::size_t date, char (&text)[kShortTextSize]);

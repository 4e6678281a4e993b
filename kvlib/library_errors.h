// The errors that the support library records itself, beside those of kvlib/error_report.h: warnings, errors of outside
// parties, and texts of the library's own catalog on errors that are there already. Nothing here throws.
#pragma once

#include <cstdint>

#include "kvlib/error.h"
#include "kvlib/error_report.h"

// As addError(id), but a warning.
KvError* addWarning(std::uint16_t id);

// Records an error of an outside party with its own text and code. Returns as addError does.
KvError* addDatabaseError(std::uint16_t number, std::int64_t nativeError, const char* text, int errorType,
                          kvCPType codePage);

// Append library text `id` to the last error, clearing its explicit state, or to the one at position `pos`.
void appendTextToLastError(std::uint16_t id);
void appendTextToErrorAtPos(std::uint16_t id, std::uint64_t pos);

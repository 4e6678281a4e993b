// From a system error number (<errno.h>) to the support library's error.
#pragma once

#include <cstdint>

class KvError;

// The library error (LibraryMessage) that stands for `systemError`; kFileError for every number without one of its
// own. A read-only file system has its own number and is not told as a read-only file.
[[nodiscard]] std::uint16_t libraryErrorNumber(int systemError) noexcept;

// Records the library's error for `systemError` on the calling thread's current error list, with `name` (may be null)
// appended where it helps and the system's own words where the library has none. Does nothing in a thread without a
// list. Returns the error's number.
std::uint16_t bosMapError(int systemError, const char* name);

// The same, and makes the recorded error a warning: for a failure that the caller has an answer to.
std::uint16_t bosMapErrorAsWarning(int systemError, const char* name);

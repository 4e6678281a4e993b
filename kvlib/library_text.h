// The texts of the support library's own message catalog. Nothing here throws; may be called from any thread.
#pragma once

#include <cstdint>

// Largest text of the library's own catalog, with its terminator, in units or bytes.
inline constexpr std::uint32_t kLibraryTextSize = 1024;

// Opens the library's catalog as the process-wide one (kvlib/catalog.h) when none is open. Does nothing while the
// calling thread holds the lock of an INI cache: whoever sets the install directory holds CritOpen and waits for that
// lock.
void openLibraryCatalog();

// Loads text `id` of the library's own catalog, opening the catalog when needed, into a buffer of kLibraryTextSize
// units or bytes. Returns the length; a text that is missing leaves "" and 0.
std::uint32_t winGetString(char16_t* buffer, std::uint32_t id);
std::uint32_t winGetString(char* buffer, std::uint32_t id);

// Message catalogs: which locale's catalog is opened, and the way from a message number to a text.
//
// Catalogs are POSIX message catalogs (https://pubs.opengroup.org/onlinepubs/9699919799/functions/catopen.html) made by
// gencat. All texts stand in set 1 under their message number. They lie in
// "<install directory>/locale/<locale>/LC_MESSAGES/". A number without a text, or without a catalog, is shown as the
// number itself in decimal: a missing catalog is never an error here.
//
// The locale is that of the process for LC_MESSAGES. While that is "C", the environment decides: "LC_MESSAGES", else
// "LANG", else "en_US"; a variable that is unset or "C" is passed over. The value is used as it stands, codeset
// included; "en_US" is tried once more when its catalog can't be opened.
#pragma once

#include <nl_types.h>

#include <cstdint>

#include "kvlib/critical_section.h"

constexpr std::size_t kInstallDirSize = 1025;

// The install directory, without trailing white space and without a trailing "/". Empty until bosSetInstallDir
// (kvini/install_dir.h) was called. Guarded by CritOpen.
extern char InstallDirLocation[kInstallDirSize];

// What a catalog handle is while no catalog is open; the value that catopen returns on failure.
inline nl_catd invalidCatalog() {
    return reinterpret_cast<nl_catd>(-1);  // NOLINT(performance-no-int-to-ptr): POSIX defines it so
}

// The process-wide catalog that LoadString reads. Changed under CritOpen and CritCatalog together.
extern nl_catd CatFD;

// Guards InstallDirLocation and CatFD. May be held while an INI file is read, so nobody who holds the lock of an INI
// cache may take it. Usable from static initialisers.
extern KvCriticalSection CritOpen;

// Guards each lookup: catgets on one catalog is not safe for several threads. Nothing else is taken while it is held.
extern KvCriticalSection CritCatalog;

// Opens the catalog file `name`, or `hinst` + ".mo" when `name` is null, of the chosen locale or else of "en_US".
// The caller closes it with CloseStrings. Returns the invalid handle when there is neither; records no error.
// Takes no lock: not to be called while another thread sets the install directory.
[[nodiscard]] nl_catd OpenStrings(const char* hinst, const char* name);

// Closes a handle of OpenStrings; the invalid handle is left alone.
void CloseStrings(nl_catd handle);

// Copies the text of `id` into `buffer`, at most `size` - 1 bytes and always terminated; `size` 0 means that the
// buffer is large enough for any text, and a negative one writes nothing. Returns the length of the copy.
std::int32_t LoadStringFromOpenFile(nl_catd handle, std::uint32_t id, char* buffer, std::int32_t size);

// The same from the process-wide catalog; `hinst` is ignored.
std::int32_t LoadString(const char* hinst, std::uint32_t id, char* buffer, std::int32_t size);

// LoadString for UTF-16: `size` counts units and is capped at 4,096 (0 means that cap). Returns the units written
// before the terminator. The text "Failed!" stands for one that can't be converted.
std::int32_t LoadStringW(const char* hinst, std::uint32_t id, char16_t* buffer, std::int32_t size);

// Opens the process-wide catalog `hinst` + ".mo" unless it is open, and counts the user in `useCount` (may be null).
// Always 0: a catalog that can't be opened leaves CatFD invalid, and the next call tries again.
std::int32_t bosLoadResourceDLL(const char* hinst, int ignored, void* ignoredResult, std::uint32_t* useCount);

// Counts a user off and closes the process-wide catalog when none is left or none was counted. Always 0.
std::int32_t bosFreeResourceDLL(void* ignored, std::uint32_t* useCount);

// Appends the product's library suffix "23" to the name in the buffer, which must have room for it.
void bosdllname(char* name);

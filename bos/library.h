// Finding files along the environment's directory lists, and loading shared libraries found that way.
// Everything here may be called from any thread as long as none changes the environment.
#pragma once

#include <dlfcn.h>

#include <cstdint>
#include <string>

#include "bos/path_size.h"

// Which directories bosLocateFile searches, in the order of this list; a plain enum, since callers combine the bits.
namespace LocateFlag {
enum Flag : std::uint32_t {
    kCurrentDirectory = 0x10,
    kHome = 0x02,       // "HOME"
    kProduct = 0x04,    // "KV", "KVLIB"
    kLibraries = 0x08,  // "LD_LIBRARY_PATH", "LD_RUN_PATH", "/usr/local/lib"; each directory's parent is tried as well
    kPath = 0x01,       // "PATH"
};
}  // namespace LocateFlag

// Bits of bosfattr's result; a plain enum for the same reason.
namespace FileKind {
enum Bit : std::uint32_t {
    kRegular = 1,
    kDirectory = 2,
    kReadOnly = 4,  // with kRegular: the caller may not write the file
    kMissing = 8,
    kUnreadable = 16,  // stat failed, and not because the file is missing
    kOther = 32,
};
}  // namespace FileKind

// What kind of file `name` is (POSIX stat). ".." is a directory without being looked at. Whether the caller may write
// a regular file is judged by its mode bits alone, so root is not special.
[[nodiscard]] std::uint32_t bosfattr(const char* name);

// Looks for the regular file `name`: as given, then in the directories that `flags` (LocateFlag) select. Copies the
// path found to `result` (kPathSize bytes, or null), which is empty otherwise; paths that don't fit are passed over.
// Returns 0 when found, 1 when not; records no error.
[[nodiscard]] std::uint32_t bosLocateFile(char* result, const char* name, std::uint32_t flags);

// Loads the shared library `name`, which needs neither directory nor ".so", along KV, KVLIB and the loader's own
// variables; with `addVersion` the product's suffix "23" follows the name. Returns the handle for dlsym, which the
// caller closes with dlclose (POSIX dlopen), or null. Records kLibraryNotLoadable for a library that was found but
// refused by the loader, and nothing for one that was not found.
void* bosLoadLibrary(const char* name, int addVersion);
void* bosLoadLibrary(const char16_t* name, int addVersion);

// Where bosLoadLibrary finds the library `name` without the suffix; empty when it does not.
[[nodiscard]] std::string locateLibrary(const char* name);

// Closes a handle of the dynamic loader, for std::unique_ptr<void, LibraryCloser>.
struct LibraryCloser {
    void operator()(void* handle) const { dlclose(handle); }
};

// Files: the one routine that opens them, and thin wrappers over the POSIX calls.
//
// Functions that can fail return 0, or 1 with the reason (bos/errno_mapping.h) on the calling thread's current error
// list if it has one. Descriptors are the caller's, closed on exec, and never 0, which stands for "no file". Names are
// 8-bit paths; the twins on UTF-16 convert to the code page of the locale. Everything may be called from any thread,
// but two threads that move one descriptor's position disturb each other.
#pragma once

#include <cstddef>
#include <cstdint>

#include "bos/path_size.h"

// The bits of bosFileOpen's flag word; a plain enum, since callers combine the bits.
namespace OpenFlag {
enum Flag : std::uint32_t {
    kCreate = 0x0001,          // open read/write, create (mode 0666), share-lock; kSearchPath is ignored
    kReadWrite = 0x0002,       // read-only without it
    kCreateMissing = 0x0004,   // create the file when it does not exist
    kHomeRelative = 0x0008,    // the name is relative to the home directory
    kSearchPath = 0x0010,      // when the open fails, look for the file along "PATH" and try once more
    kExclusive = 0x0020,       // with kCreate: fail when the file exists
    kTemporary = 0x0040,       // make a temporary name and create it
    kTemporaryToo = 0x0080,    // the same
    kResolveOnly = 0x0100,     // give the resolved path and descriptor 0, open nothing
    kRecogniseNames = 0x0200,  // the configuration files' names lead to where they are (docs/ini-format.md)
    kNoSharedLock = 0x0400,    // switches kSharedLock off
    kSharedLock = 0x0800,      // read-lock after opening
    kExclusiveLock = 0x1000,   // with kReadWrite: write-lock after opening
    kTruncate = 0x2000,        // with kCreate: empty the file
};
}  // namespace OpenFlag

// Opens the file `name`, a buffer of kPathSize bytes that receives the resolved path or the temporary name, as `flags`
// (OpenFlag) say. The lock is a POSIX record lock (fcntl F_SETLK) on the byte at offset 1 and never waited for; it goes
// with the first descriptor of the file that the process closes.
//
// A lock that can't be had fails the open with kFileBusy and leaves the file as it was. Creating is different where it
// asks for no exclusive lock: its read lock is tried and its absence ignored, so that a program that holds a lock for
// long can't keep others from saving.
[[nodiscard]] int bosFileOpen(char* name, std::uint32_t flags, int* descriptor);
[[nodiscard]] int bosFileOpen(char16_t* name, std::uint32_t flags, int* descriptor);

// The same, but records nothing: returns 0 or the system error number, for callers with an answer to some failures.
[[nodiscard]] int openFile(char* name, std::uint32_t flags, int* descriptor);

int bosFileClose(int descriptor);

// Reads up to `size` bytes at `offset` (-1: at the current position) and stores in `got` how many there were; fewer
// than `size` only at the end of the file.
[[nodiscard]] int bosFileRead(int descriptor, std::int64_t offset, void* buffer, std::uint64_t size,
                              std::uint64_t* got);

// Writes all of `size` bytes at `offset` (-1: at the current position). A failure may leave a part written.
[[nodiscard]] int bosFileWrite(int descriptor, std::int64_t offset, const void* buffer, std::uint64_t size);

// Moves the position as lseek does (SEEK_SET, SEEK_CUR, SEEK_END); `position` (may be null) receives the new one.
int bosFileSeek(int descriptor, std::int64_t offset, int whence, std::int64_t* position);

[[nodiscard]] int bosFileTruncate(int descriptor, std::uint64_t size);
[[nodiscard]] int bosFileTruncate(const char* name, std::uint64_t size);
[[nodiscard]] int bosFileTruncate(const char16_t* name, std::uint64_t size);

// Waits until the disk has what was written. A file system that can't tell counts as one that has it.
[[nodiscard]] int bosFileSync(int descriptor);

[[nodiscard]] int bosFileSize(int descriptor, std::uint64_t* size);

int bosFileDelete(const char* name);
int bosFileDelete(const char16_t* name);

// 1 when something of that name exists, else 0; records no error.
[[nodiscard]] int bosexist(const char* name);
[[nodiscard]] int bosexist(const char16_t* name);

// The file's modification time (seconds, low 32 bits) and its size; either pointer may be null.
[[nodiscard]] int bosFileDateSize(const char* name, std::uint32_t* date, std::uint64_t* size);
[[nodiscard]] int bosFileDateSize(const char16_t* name, std::uint32_t* date, std::uint64_t* size);

// 1 when files can be created in the directory of `path` (what stands before its last "/"), tried by creating and
// removing one, else 0; records no error.
[[nodiscard]] int bosftest(const char* path);
[[nodiscard]] int bosftest(const char16_t* path);

// Locks a range of bytes without waiting (length 0: to the end of the file, however it grows).
namespace RegionLock {
enum Mode : int { kRelease = 0, kShared = 1, kExclusive = 2 };
}  // namespace RegionLock
[[nodiscard]] int bosRegionLock(int descriptor, int mode, std::int64_t offset, std::int64_t length);

#include "bos/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <string>

#include "bos/errno_mapping.h"
#include "bos/file_names.h"
#include "bos/library.h"
#include "kvlib/console.h"
#include "kvlib/debug_mask.h"
#include "kvlib/error_report.h"
#include "kvlib/out_of_memory.h"
#include "kvlib/text.h"

namespace {

constexpr mode_t kCreationMode = 0666;
constexpr std::int64_t kLockOffset = 1;
constexpr int kTemporaryNameTries = 100;

// 0, or 1 with `systemError` recorded.
int reported(int systemError, const char* name) {
    if (systemError == 0) {
        return 0;
    }
    bosMapError(systemError, name);
    return 1;
}

int reportedResult(int result, const char* name) {
    return reported(result == 0 ? 0 : errno, name);
}

// Opens at a descriptor above 0, or -1: a program started without standard input would get 0, which means "no file"
// to all callers.
int openAboveZero(const char* path, int mode) {
    const int descriptor = open(path, mode | O_CLOEXEC, kCreationMode);
    if (descriptor != 0) {
        return descriptor;
    }
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, 1);
    const int moveError = errno;
    close(descriptor);
    errno = moveError;
    return moved;
}

int setLock(int descriptor, short type, std::int64_t offset, std::int64_t length) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = offset;
    lock.l_len = length;
    return fcntl(descriptor, F_SETLK, &lock);
}

bool wantsWriteLock(std::uint32_t flags) {
    constexpr std::uint32_t kWriteLock = OpenFlag::kExclusiveLock | OpenFlag::kReadWrite;
    return (flags & kWriteLock) == kWriteLock;
}

int lockAsFlagged(int descriptor, std::uint32_t flags) {
    if (wantsWriteLock(flags)) {
        return setLock(descriptor, F_WRLCK, kLockOffset, 1);
    }
    if ((flags & OpenFlag::kSharedLock) != 0 && (flags & OpenFlag::kNoSharedLock) == 0) {
        return setLock(descriptor, F_RDLCK, kLockOffset, 1);
    }
    return 0;
}

int createFile(const char* path, std::uint32_t flags, int* descriptor) {
    int mode = O_RDWR | O_CREAT;
    if ((flags & OpenFlag::kExclusive) != 0) {
        mode |= O_EXCL;
    }
    const int opened = openAboveZero(path, mode);
    if (opened < 0) {
        return errno;
    }
    // Emptied last of what can fail, and so only for a caller who gets its descriptor. Devices have no length.
    if ((wantsWriteLock(flags) && setLock(opened, F_WRLCK, kLockOffset, 1) != 0) ||
        ((flags & OpenFlag::kTruncate) != 0 && ftruncate(opened, 0) != 0 && errno != EINVAL)) {
        const int systemError = errno;
        close(opened);
        return systemError;
    }
    if (!wantsWriteLock(flags)) {
        // Tried, but its failure is ignored: the lock of another program must not keep users from saving.
        setLock(opened, F_RDLCK, kLockOffset, 1);
    }
    *descriptor = opened;
    return 0;
}

int openExisting(const char* path, std::uint32_t flags, int* descriptor) {
    int mode = (flags & OpenFlag::kReadWrite) != 0 ? O_RDWR : O_RDONLY;
    if ((flags & OpenFlag::kCreateMissing) != 0 && bosexist(path) == 0) {
        mode |= O_CREAT;
    }
    const int opened = openAboveZero(path, mode);
    if (opened < 0) {
        return errno;
    }
    if (lockAsFlagged(opened, flags) != 0) {
        const int lockError = errno;
        close(opened);
        return lockError;
    }
    *descriptor = opened;
    return 0;
}

// Gives the caller the path that his name led to. A path that does not fit his buffer fails and leaves the name as it
// is.
int storeResolvedName(char* name, const std::string& path) {
    return path.size() < kPathSize && copyWhole(name, kPathSize, path) ? 0 : ENAMETOOLONG;
}

// Always exclusive, so that nobody can put a link where the file will be.
int createTemporary(char* name, std::uint32_t flags, int* descriptor) {
    int result = EEXIST;
    for (int i = 0; i < kTemporaryNameTries && result == EEXIST; ++i) {
        result = storeResolvedName(name, temporaryName());
        if (debugEnabled(DebugBit::kFile)) {
            printOnConsole("bosfopen: Temp File %s ", name);
        }
        if (result == 0) {
            result = createFile(name, flags | OpenFlag::kExclusive, descriptor);
        }
    }
    return result;
}

int openResolved(char* name, std::uint32_t flags, int* descriptor) {
    if ((flags & OpenFlag::kCreate) != 0) {
        return createFile(name, flags, descriptor);
    }
    if ((flags & OpenFlag::kResolveOnly) != 0) {
        return 0;
    }
    const int result = openExisting(name, flags, descriptor);
    char found[kPathSize];
    if (result == 0 || (flags & OpenFlag::kSearchPath) == 0 || bosLocateFile(found, name, LocateFlag::kPath) != 0) {
        return result;
    }
    std::strcpy(name, found);
    return openExisting(name, flags, descriptor);
}

// Calls `function` with the name in the code page of the locale; `failure` is the answer when memory runs out.
template <typename Function>
int withName(const char16_t* name, int failure, Function function) {
    return orMemoryError(failure, [&] { return function(fromUtf16(name, kCPLocale).c_str()); });
}

}  // namespace

int openFile(char* name, std::uint32_t flags, int* descriptor) {
    return orFailure(ENOMEM, [&] {
        *descriptor = 0;
        if (debugEnabled(DebugBit::kFile)) {
            printOnConsole("bosfopen - File:%s\n", name);
        }
        if ((flags & (OpenFlag::kTemporary | OpenFlag::kTemporaryToo)) != 0) {
            return createTemporary(name, flags, descriptor);
        }
        const ResolvedName resolved =
            resolveFileName(name, (flags & OpenFlag::kRecogniseNames) != 0, (flags & OpenFlag::kHomeRelative) != 0);
        const int result = storeResolvedName(name, resolved.path);
        if (result != 0 || resolved.systemError != 0) {
            return result != 0 ? result : resolved.systemError;
        }
        return openResolved(name, flags, descriptor);
    });
}

int bosFileOpen(char* name, std::uint32_t flags, int* descriptor) {
    return reported(openFile(name, flags, descriptor), name);
}

int bosFileOpen(char16_t* name, std::uint32_t flags, int* descriptor) {
    *descriptor = 0;
    const int result = orMemoryError(1, [&] {
        char narrow[kPathSize];
        if (storeResolvedName(narrow, fromUtf16(name, kCPLocale)) != 0) {
            return reported(ENAMETOOLONG, nullptr);
        }
        const int opened = bosFileOpen(narrow, flags, descriptor);
        // Every UTF-16 form of a path is at most as long in units as it is in bytes.
        const std::u16string wide = toUtf16(narrow, kCPLocale);
        wide.copy(name, wide.size());
        name[wide.size()] = u'\0';
        return opened;
    });
    if (result != 0 && *descriptor != 0) {
        close(*descriptor);
        *descriptor = 0;
    }
    return result;
}

int bosFileClose(int descriptor) {
    return reportedResult(close(descriptor), nullptr);
}

int bosFileRead(int descriptor, std::int64_t offset, void* buffer, std::uint64_t size, std::uint64_t* got) {
    *got = 0;
    if (offset >= 0 && lseek(descriptor, offset, SEEK_SET) < 0) {
        return reported(errno, nullptr);
    }
    while (*got < size) {
        const ssize_t count = read(descriptor, static_cast<char*>(buffer) + *got, size - *got);
        if (count == 0) {
            break;
        }
        if (count > 0) {
            *got += static_cast<std::uint64_t>(count);
        } else if (errno != EINTR) {
            return reported(errno, nullptr);
        }
    }
    return 0;
}

int bosFileWrite(int descriptor, std::int64_t offset, const void* buffer, std::uint64_t size) {
    if (offset >= 0 && lseek(descriptor, offset, SEEK_SET) < 0) {
        return reported(errno, nullptr);
    }
    std::uint64_t done = 0;
    while (done < size) {
        const ssize_t count = write(descriptor, static_cast<const char*>(buffer) + done, size - done);
        if (count > 0) {
            done += static_cast<std::uint64_t>(count);
        } else if (count == 0 || errno != EINTR) {
            return reported(count == 0 ? ENOSPC : errno, nullptr);
        }
    }
    return 0;
}

int bosFileSeek(int descriptor, std::int64_t offset, int whence, std::int64_t* position) {
    const off_t reached = lseek(descriptor, offset, whence);
    if (reached < 0) {
        return reported(errno, nullptr);
    }
    if (position != nullptr) {
        *position = reached;
    }
    return 0;
}

int bosFileTruncate(int descriptor, std::uint64_t size) {
    return reportedResult(ftruncate(descriptor, static_cast<off_t>(size)), nullptr);
}

int bosFileTruncate(const char* name, std::uint64_t size) {
    return reportedResult(truncate(name, static_cast<off_t>(size)), name);
}

int bosFileTruncate(const char16_t* name, std::uint64_t size) {
    return withName(name, 1, [=](const char* narrow) { return bosFileTruncate(narrow, size); });
}

int bosFileSync(int descriptor) {
    return fsync(descriptor) == 0 || errno == EINVAL || errno == ENOSYS ? 0 : reported(errno, nullptr);
}

int bosFileSize(int descriptor, std::uint64_t* size) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) {
        return reported(errno, nullptr);
    }
    *size = static_cast<std::uint64_t>(status.st_size);
    return 0;
}

int bosFileDelete(const char* name) {
    return reportedResult(unlink(name), name);
}

int bosFileDelete(const char16_t* name) {
    return withName(name, 1, [](const char* narrow) { return bosFileDelete(narrow); });
}

int bosexist(const char* name) {
    const int answer = access(name, F_OK) == 0 ? 1 : 0;
    if (debugEnabled(DebugBit::kFile)) {
        printOnConsole("bosexist: Name=%s ", name);
        printOnConsole(" exists: %d\n", answer);
    }
    return answer;
}

int bosexist(const char16_t* name) {
    return withName(name, 0, [](const char* narrow) { return bosexist(narrow); });
}

int bosFileDateSize(const char* name, std::uint32_t* date, std::uint64_t* size) {
    struct stat status = {};
    if (stat(name, &status) != 0) {
        return reported(errno, name);
    }
    if (date != nullptr) {
        *date = static_cast<std::uint32_t>(status.st_mtime);
    }
    if (size != nullptr) {
        *size = static_cast<std::uint64_t>(status.st_size);
    }
    return 0;
}

int bosFileDateSize(const char16_t* name, std::uint32_t* date, std::uint64_t* size) {
    return withName(name, 1, [=](const char* narrow) { return bosFileDateSize(narrow, date, size); });
}

int bosftest(const char* path) {
    return orMemoryError(0, [&] {
        const std::string whole = path;
        const std::string probe = whole.substr(0, whole.rfind('/') + 1) + "$$$kv$$$.$kv";
        const int descriptor = open(probe.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kCreationMode);
        if (descriptor < 0) {
            return 0;
        }
        close(descriptor);
        unlink(probe.c_str());
        return 1;
    });
}

int bosftest(const char16_t* path) {
    return withName(path, 0, [](const char* narrow) { return bosftest(narrow); });
}

int bosRegionLock(int descriptor, int mode, std::int64_t offset, std::int64_t length) {
    constexpr short kTypes[] = {F_UNLCK, F_RDLCK, F_WRLCK};
    if (mode < RegionLock::kRelease || mode > RegionLock::kExclusive) {
        return reported(EINVAL, nullptr);
    }
    return reportedResult(setLock(descriptor, kTypes[mode], offset, length), nullptr);
}

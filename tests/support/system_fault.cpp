#include "tests/support/system_fault.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <new>
#include <utility>

namespace {

constexpr size_t kLongestWrite = 10;

// Stands for the descriptor of calls with a name.
constexpr int kNamed = -1;
constexpr int kRemoval = -2;

bool isNow(bool counts) {
    return counts && SystemFault::active->stepsLeft-- == 0;
}

// Runs `call`, or makes it fail.
template <typename Call>
auto meet(int descriptor, Call call) -> decltype(call()) {
    const SystemFault* const now = SystemFault::active;
    const bool isFirst = now != nullptr && isNow(now->fault != Fault::kFileEnds && now->fault != Fault::kMemoryEnds);
    const bool diskIsGone = now != nullptr && now->fault == Fault::kDiskIsGone;
    if (!isFirst && !(diskIsGone && now->happened() && descriptor != kRemoval)) {
        return call();
    }
    if (now->fault == Fault::kKilled) {
        raise(SIGKILL);
    }
    if (now->fault == Fault::kIsClosed && descriptor >= 0) {
        syscall(SYS_close, descriptor);
        return call();
    }
    if (isFirst && descriptor >= 0 && (now->fault == Fault::kActsAndFails || diskIsGone)) {
        call();
    }
    errno = now->error;
    return -1;
}

bool fileEnds() {
    SystemFault* const now = SystemFault::active;
    return now != nullptr && now->fault == Fault::kFileEnds && now->stepsLeft-- <= 0;
}

}  // namespace

#define WRAP(result, name, descriptor, parameters, arguments)             \
    result __real_##name parameters;                                      \
    result __wrap_##name parameters;                                      \
    result __wrap_##name parameters {                                     \
        return meet(descriptor, [&] { return __real_##name arguments; }); \
    }

extern "C" {
WRAP(int, close, descriptor, (int descriptor), (descriptor))
int __real_fsync(int descriptor);
int __wrap_fsync(int descriptor);
int __wrap_fsync(int descriptor) {
    ++syncs;
    if (inTheSync) {
        std::exchange(inTheSync, nullptr)();
    }
    return meet(descriptor, [=] { return __real_fsync(descriptor); });
}
WRAP(int, fchmod, descriptor, (int descriptor, mode_t mode), (descriptor, mode))
WRAP(int, fchown, descriptor, (int descriptor, uid_t user, gid_t group), (descriptor, user, group))
WRAP(int, ftruncate, descriptor, (int descriptor, off_t size), (descriptor, size))
WRAP(off_t, lseek, descriptor, (int descriptor, off_t offset, int whence), (descriptor, offset, whence))
WRAP(ssize_t, read, descriptor, (int descriptor, void* buffer, size_t size),
     (descriptor, buffer, fileEnds() ? 0 : size))
WRAP(ssize_t, write, descriptor, (int descriptor, const void* buffer, size_t size),
     (descriptor, buffer, SystemFault::active != nullptr ? std::min(size, kLongestWrite) : size))
WRAP(ssize_t, pread, descriptor, (int descriptor, void* buffer, size_t size, off_t offset),
     (descriptor, buffer, size, offset))
WRAP(ssize_t, pwrite, descriptor, (int descriptor, const void* buffer, size_t size, off_t offset),
     (descriptor, buffer, size, offset))
WRAP(int, mkostemp, kNamed, (char* name, int flags), (name, flags))
WRAP(int, rename, kNamed, (const char* from, const char* to), (from, to))
WRAP(int, renameat2, kNamed, (int folder, const char* from, int other, const char* to, unsigned flags),
     (folder, from, other, to, flags))
WRAP(int, open, kNamed, (const char* path, int flags, mode_t mode), (path, flags, mode))
WRAP(int, stat, kNamed, (const char* path, struct stat* status), (path, status))
WRAP(int, unlink, kRemoval, (const char* path), (path))

int __real_nanosleep(const timespec* time, timespec* rest);
int __wrap_nanosleep(const timespec* time, timespec* rest);
int __wrap_nanosleep(const timespec* time, timespec* rest) {
    if (inThePause) {
        std::exchange(inThePause, nullptr)();
    }
    return __real_nanosleep(time, rest);
}
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    const SystemFault* const now = SystemFault::active;
    const bool isGone = now != nullptr && (isNow(now->fault == Fault::kMemoryEnds) ||
                                           (now->fault == Fault::kFailsWithoutMemory && now->happened()));
    return isGone ? nullptr : std::malloc(std::max<std::size_t>(size, 1));
}

void* operator new(std::size_t size) {
    void* memory = operator new(size, std::nothrow);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

#include "tests/support/system_fault.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <new>
#include <utility>

namespace {

constexpr size_t kLongestWrite = 10;

bool active = false;
int stepsLeft = 0;
int error = 0;
int synced = 0;
Fault fault = Fault::kFails;
std::function<void()> inThePause;

// Stands for the descriptor of calls with a name.
constexpr int kNamed = -1;
constexpr int kRemoval = -2;

bool isNow(bool counts) {
    return active && counts && stepsLeft-- == 0;
}

// Runs `call`, or makes it fail.
template <typename Call>
auto meet(int descriptor, Call call) -> decltype(call()) {
    const bool counts = fault != Fault::kFileEnds && fault != Fault::kMemoryEnds;
    const bool lasts = fault == Fault::kDiskIsGone || fault == Fault::kActsAndDiskIsGone;
    const bool isFirst = isNow(counts);
    if (isFirst || (active && lasts && stepsLeft < 0 && descriptor != kRemoval)) {
        if (fault == Fault::kKilled) {
            raise(SIGKILL);
        }
        const bool acts = fault == Fault::kActsAndFails || fault == Fault::kActsAndDiskIsGone;
        if (isFirst && acts && descriptor >= 0) {
            call();
        }
        if (fault != Fault::kDescriptorIsClosed || descriptor < 0) {
            errno = error;
            return -1;
        }
        syscall(SYS_close, descriptor);
    }
    return call();
}

}  // namespace

SystemFault::SystemFault(Fault kind, int step, int systemError) {
    fault = kind;
    stepsLeft = step;
    error = systemError;
    synced = 0;
    active = true;
}

SystemFault::~SystemFault() {
    active = false;
}

bool SystemFault::happened() const {
    return stepsLeft < 0;
}

int SystemFault::syncs() const {
    return synced;
}

InThePause::InThePause(std::function<void()> action) {
    inThePause = std::move(action);
}

InThePause::~InThePause() {
    inThePause = nullptr;
}

#define WRAP(result, name, descriptor, parameters, arguments)             \
    result __real_##name parameters;                                      \
    result __wrap_##name parameters;                                      \
    result __wrap_##name parameters {                                     \
        return meet(descriptor, [&] { return __real_##name arguments; }); \
    }

extern "C" {
WRAP(int, close, descriptor, (int descriptor), (descriptor))
WRAP(int, fsync, (active ? ++synced : 0, descriptor), (int descriptor), (descriptor))
WRAP(int, fchmod, descriptor, (int descriptor, mode_t mode), (descriptor, mode))
WRAP(int, fchown, descriptor, (int descriptor, uid_t user, gid_t group), (descriptor, user, group))
WRAP(int, ftruncate, descriptor, (int descriptor, off_t size), (descriptor, size))
WRAP(off_t, lseek, descriptor, (int descriptor, off_t offset, int whence), (descriptor, offset, whence))
WRAP(ssize_t, read, descriptor, (int descriptor, void* buffer, size_t size),
     (descriptor, buffer, active&& fault == Fault::kFileEnds && stepsLeft-- <= 0 ? 0 : size))
WRAP(ssize_t, write, descriptor, (int descriptor, const void* buffer, size_t size),
     (descriptor, buffer, active ? std::min(size, kLongestWrite) : size))
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
    const bool isGone =
        isNow(fault == Fault::kMemoryEnds) || (active && fault == Fault::kFailsWithoutMemory && stepsLeft < 0);
    return isGone ? nullptr : std::malloc(std::max<std::size_t>(size, 1));
}

void* operator new(std::size_t size) {
    void* memory = operator new(size, std::nothrow);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

#include "tests/support/system_fault.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

namespace {

constexpr size_t kLongestWrite = 10;

bool active = false;
int stepsLeft = 0;
Fault fault = Fault::kFails;

// Stands for the descriptor of calls with a name.
constexpr int kNamed = -1;
constexpr int kRemoval = -2;

// Runs `call`, or makes it fail.
template <typename Call>
auto meet(int descriptor, Call call) -> decltype(call()) {
    const bool isNow = active && stepsLeft-- == 0;
    if (isNow || (active && fault == Fault::kDiskIsGone && stepsLeft < 0 && descriptor != kRemoval)) {
        if (fault == Fault::kKilled) {
            raise(SIGKILL);
        }
        if (fault != Fault::kDescriptorIsClosed || descriptor < 0) {
            errno = EIO;
            return -1;
        }
        syscall(SYS_close, descriptor);
    }
    return call();
}

}  // namespace

SystemFault::SystemFault(Fault kind, int step) {
    fault = kind;
    stepsLeft = step;
    active = true;
}

SystemFault::~SystemFault() {
    active = false;
}

bool SystemFault::happened() const {
    return stepsLeft < 0;
}

#define WRAP(result, name, descriptor, parameters, arguments)             \
    result __real_##name parameters;                                      \
    result __wrap_##name parameters;                                      \
    result __wrap_##name parameters {                                     \
        return meet(descriptor, [&] { return __real_##name arguments; }); \
    }

extern "C" {
WRAP(int, close, descriptor, (int descriptor), (descriptor))
WRAP(int, fsync, descriptor, (int descriptor), (descriptor))
WRAP(int, fchmod, descriptor, (int descriptor, mode_t mode), (descriptor, mode))
WRAP(int, fchown, descriptor, (int descriptor, uid_t user, gid_t group), (descriptor, user, group))
WRAP(int, ftruncate, descriptor, (int descriptor, off_t size), (descriptor, size))
WRAP(off_t, lseek, descriptor, (int descriptor, off_t offset, int whence), (descriptor, offset, whence))
WRAP(ssize_t, read, descriptor, (int descriptor, void* buffer, size_t size), (descriptor, buffer, size))
WRAP(ssize_t, write, descriptor, (int descriptor, const void* buffer, size_t size),
     (descriptor, buffer, active ? std::min(size, kLongestWrite) : size))
WRAP(int, open, kNamed, (const char* path, int flags, mode_t mode), (path, flags, mode))
WRAP(int, stat, kNamed, (const char* path, struct stat* status), (path, status))
WRAP(int, unlink, kRemoval, (const char* path), (path))
}

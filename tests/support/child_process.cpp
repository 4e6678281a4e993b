#include "tests/support/child_process.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace {

int exitStatus(pid_t pid) {
    int status = 0;
    return waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

int runInChild(const std::function<int()>& work) {
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        _exit(work());
    }
    return exitStatus(pid);
}

StayingChild::StayingChild(const std::function<bool()>& work) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) {
        throw std::runtime_error("no sockets");
    }
    std::fflush(nullptr);
    pid_ = fork();
    char byte = 0;
    if (pid_ == 0) {
        close(ends[0]);
        byte = work() ? 1 : 0;
        const bool told = write(ends[1], &byte, 1) == 1;
        // Ends when the parent closes its end.
        _exit(told && read(ends[1], &byte, 1) == 0 ? 0 : 1);
    }
    close(ends[1]);
    release_ = ends[0];
    worked_ = read(release_, &byte, 1) == 1 && byte == 1;
}

StayingChild::~StayingChild() {
    close(release_);
    exitStatus(pid_);
}

#include "tests/support/child_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <stdexcept>

namespace {

int exitStatus(pid_t pid) {
    int status = 0;
    return waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::array<int, 2> makePipe() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        throw std::runtime_error("no pipe");
    }
    return ends;
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
    const std::array<int, 2> answer = makePipe();
    const std::array<int, 2> release = makePipe();
    std::fflush(nullptr);
    pid_ = fork();
    char byte = 0;
    if (pid_ == 0) {
        close(release[1]);
        byte = work() ? 1 : 0;
        const bool told = write(answer[1], &byte, 1) == 1;
        // Ends when the parent closes its end.
        _exit(told && read(release[0], &byte, 1) == 0 ? 0 : 1);
    }
    close(answer[1]);
    close(release[0]);
    worked_ = read(answer[0], &byte, 1) == 1 && byte == 1;
    close(answer[0]);
    release_ = release[1];
}

StayingChild::~StayingChild() {
    close(release_);
    exitStatus(pid_);
}

#include "admin/file_aside.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

namespace {

// What the destructor promises; safe between fork and exec (POSIX, signal-safety).
void settle(const char* aside, const char* path) {
    struct stat status {};
    const bool isThere = lstat(path, &status) == 0;
    if (isThere ? S_ISREG(status.st_mode) && status.st_size == 0 : errno == ENOENT) {
        std::rename(aside, path);
    } else if (isThere) {
        unlink(aside);
    }
}

}  // namespace

FileAside::FileAside(const std::string& path) : path_(path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return;
    }
    // A name of its own, since the file's may be as long as names can be.
    std::string aside = path.substr(0, path.rfind('/') + 1) + ".vhaside-XXXXXX";
    const int reserved = mkostemp(aside.data(), O_CLOEXEC);
    if (reserved < 0) {
        return;
    }
    close(reserved);
    if (std::rename(path.c_str(), aside.c_str()) != 0) {
        unlink(aside.c_str());
        return;
    }
    aside_ = aside;
    startGuardian();
}

FileAside::~FileAside() {
    if (!aside_.empty()) {
        settle(aside_.c_str(), path_.c_str());
    }
    if (lifeline_ >= 0) {
        close(lifeline_);
    }
}

// Code of a driver's maker runs meanwhile, which may end the process in any way. So another process waits for that end,
// which it sees as the end of a pipe. Nobody waits for that process: what the driver's code started may hold the pipe
// open for long.
void FileAside::startGuardian() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return;
    }
    lifeline_ = ends[1];
    const pid_t child = fork();
    if (child != 0) {
        close(ends[0]);
        while (child > 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
        }
        return;
    }
    // Not a child of the program: the driver's code may wait for all of those.
    if (fork() != 0) {
        _exit(0);
    }
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        std::signal(signal, SIG_IGN);
    }
    dup2(ends[0], STDIN_FILENO);
    close_range(STDOUT_FILENO, ~0U, 0);
    char byte = 0;
    while (read(STDIN_FILENO, &byte, 1) < 0 && errno == EINTR) {
    }
    settle(aside_.c_str(), path_.c_str());
    _exit(0);
}

// A disk without room.
#pragma once

#include <sys/resource.h>

#include <csignal>

// Lets no file grow beyond `size` bytes while it lives, as a disk does that is full.
class FullDisk {
public:
    explicit FullDisk(rlim_t size) {
        getrlimit(RLIMIT_FSIZE, &before_);
        signal_ = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{size, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, signal_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_{};
    void (*signal_)(int) = nullptr;
};

// Tests that need a second process.
#pragma once

#include <sys/types.h>

#include <functional>

// Runs `work` in a child process and returns its result (0 to 255), or -1 when the child died otherwise.
int runInChild(const std::function<int()>& work);

// A child process that runs `work` once and then stays, with the locks it took, until this object goes.
class StayingChild {
public:
    explicit StayingChild(const std::function<bool()>& work);
    ~StayingChild();
    StayingChild(const StayingChild&) = delete;
    StayingChild& operator=(const StayingChild&) = delete;

    // What `work` returned.
    bool worked() const { return worked_; }

private:
    pid_t pid_ = -1;
    int release_ = -1;
    bool worked_ = false;
};

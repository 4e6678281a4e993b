// Programs that a test starts, and waiting with a limit.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// No wait of a test takes longer.
inline constexpr int kPatienceSeconds = 10;

// Looks again and again until `condition` holds. False when it never did.
bool waitUntil(const std::function<bool()>& condition);

// A running program, ended by a signal at the end of this object's life, and also when the test itself dies.
class Program {
public:
    // Starts `arguments[0]`, found along PATH, in this process's environment; its standard output goes to a file.
    explicit Program(std::vector<std::string> arguments, const std::string& output = "/dev/null",
                     int endSignal = SIGKILL);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t process() const { return pid_; }
    bool isRunning();
    // Waits for the end; nothing when it does not come, or comes by a signal.
    std::optional<int> exitStatus();

private:
    pid_t pid_;
    int endSignal_;
    std::optional<int> status_;
};

// Runs a shell command to its end and returns what it wrote to standard output and standard error.
std::string outputOf(const std::string& command);

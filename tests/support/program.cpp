#include "tests/support/program.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <thread>

bool waitUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(kPatienceSeconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

Program::Program(std::vector<std::string> arguments, const std::string& output, int endSignal)
    : pid_(-1), endSignal_(endSignal) {
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    std::fflush(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, endSignal);
        dup2(open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), STDOUT_FILENO);
        dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
        execvp(pointers[0], pointers.data());
        _exit(127);
    }
}

Program::~Program() {
    if (isRunning()) {
        kill(pid_, endSignal_);
        waitpid(pid_, nullptr, 0);
    }
}

bool Program::isRunning() {
    int status = 0;
    if (!status_ && waitpid(pid_, &status, WNOHANG) == pid_) {
        status_ = status;
    }
    return !status_;
}

std::optional<int> Program::exitStatus() {
    waitUntil([this] { return !isRunning(); });
    return status_ && WIFEXITED(*status_) ? std::optional(WEXITSTATUS(*status_)) : std::nullopt;
}

std::string outputOf(const std::string& command) {
    std::string text;
    if (FILE* pipe = popen(("exec 2>&1; " + command).c_str(), "r")) {
        std::array<char, 4096> part{};
        while (const std::size_t length = fread(part.data(), 1, part.size(), pipe)) {
            text.append(part.data(), length);
        }
        pclose(pipe);
    }
    return text;
}

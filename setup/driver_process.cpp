#include "setup/driver_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <thread>

namespace {

// What nobody would read to its end.
constexpr std::size_t kMostPrinted = 1 << 16;
// Stands before an answer, so that an empty one can be told from none.
constexpr char kAnswered = '!';

[[noreturn]] void leaveAtOnce(int status, void* /*data*/) {
    std::fflush(nullptr);
    _exit(status);
}

}  // namespace

DriverProcess::DriverProcess(const std::function<std::string()>& work) {
    std::array<int, 2> printed{-1, -1};
    std::fflush(nullptr);
    if (answer_ && pipe2(printed.data(), O_CLOEXEC) == 0) {
        process_ = fork();
        if (process_ == 0) {
            run(work, printed[1]);
        }
        close(printed[1]);
    }
    printed_ = printed[0];
    if (process_ < 0) {
        close(printed_);
        throw std::bad_alloc();
    }
    fcntl(printed_, F_SETFL, O_NONBLOCK);
    // In both processes, since either may be the first that needs it.
    setpgid(process_, process_);
}

DriverProcess::~DriverProcess() {
    if (process_ > 0) {
        killAll();
        waitpid(process_, nullptr, 0);
    }
    close(printed_);
}

void DriverProcess::run(const std::function<std::string()>& work, int printed) const noexcept {
    setpgid(0, 0);
    // Whoever waits for it may die. And nobody wants a core file in the directory.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    constexpr rlimit kNothing{};
    setrlimit(RLIMIT_CORE, &kNothing);
    dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    dup2(printed, STDOUT_FILENO);
    dup2(printed, STDERR_FILENO);
    // What this program does at its end must not be done by a driver that ends the copy.
    on_exit(leaveAtOnce, nullptr);
    leaveAtOnce(answer_.write(kAnswered + work()) ? 0 : 1, nullptr);
}

void DriverProcess::readPrinted() {
    std::array<char, 4096> part{};
    // A pipe holds no more than this, so it comes to an end with a driver that prints for ever.
    for (int count = 0; count < 16; ++count) {
        const ssize_t size = read(printed_, part.data(), part.size());
        if (size <= 0) {
            return;
        }
        printedText_.append(part.data(), std::min(static_cast<std::size_t>(size), kMostPrinted - printedText_.size()));
    }
}

void DriverProcess::killAll() const {
    kill(-process_, SIGKILL);
}

std::optional<DriverProcess::End> DriverProcess::end() {
    readPrinted();
    siginfo_t info{};
    // It is left unburied, so that its number is still that of what it started.
    if (process_ <= 0 || waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
        info.si_pid != process_) {
        return std::nullopt;
    }
    killAll();
    waitpid(process_, nullptr, 0);
    process_ = -1;
    readPrinted();
    End end{std::nullopt, {}, printedText_};
    std::string answer;
    if (answer_.read(answer) && answer.starts_with(kAnswered)) {
        end.answer = answer.substr(1);
    } else {
        end.reason =
            info.si_code == CLD_EXITED ? "exit(" + std::to_string(info.si_status) + ")" : strsignal(info.si_status);
    }
    return end;
}

std::optional<DriverProcess::End> DriverProcess::waitForEnd(std::chrono::milliseconds patience) {
    constexpr std::chrono::milliseconds kPause(1);
    const auto last = std::chrono::steady_clock::now() + patience;
    std::optional<End> result = end();
    while (!result && std::chrono::steady_clock::now() < last) {
        std::this_thread::sleep_for(kPause);
        result = end();
    }
    return result;
}

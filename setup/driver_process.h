// Runs code of a driver in a process of its own: drivers wait for servers for minutes, print, start others and crash.
// GUI thread only.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "installer/private_file.h"

class DriverProcess {
public:
    // Begins `work`, whose text is the answer, in a copy of this process. Throws std::bad_alloc when there can be none.
    explicit DriverProcess(const std::function<std::string()>& work);
    // Ends the process with all that it started.
    ~DriverProcess();
    DriverProcess(const DriverProcess&) = delete;
    DriverProcess& operator=(const DriverProcess&) = delete;

    struct End {
        std::optional<std::string> answer;  // Nothing when the driver ended the process before.
        std::string reason{};               // How it did that, for a person.
        std::string printed{};              // What it wrote on the console; the beginning, when that is much.
    };
    // What came of it, once; nothing as long as it goes on. To be asked again soon: a driver that prints waits for it.
    std::optional<End> end();
    // The same, but waits for it; nothing when it takes longer than that.
    std::optional<End> waitForEnd(std::chrono::milliseconds patience);
    // What it wrote on the console until end() was asked last.
    const std::string& printed() const noexcept { return printedText_; }

private:
    [[noreturn]] void run(const std::function<std::string()>& work, int printed) const noexcept;
    void readPrinted();
    void killAll() const;

    pid_t process_ = -1;
    installer::PrivateFile answer_;
    int printed_ = -1;
    std::string printedText_;
};

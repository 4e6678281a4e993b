// An X server's front, for measuring what a program asks of it over a slow line.
#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

// A display that passes everything on to another of this machine, after a while in each direction, for one connection:
// the first Motif program of a server opens two, so one has to have run. It serves in a thread of its own as long as
// this object lives.
class XProxy {
public:
    using Clock = std::chrono::steady_clock;

    // `server` as DISPLAY names it, ":1".
    XProxy(const std::string& server, std::chrono::milliseconds delay);
    ~XProxy();
    XProxy(const XProxy&) = delete;
    XProxy& operator=(const XProxy&) = delete;

    const std::string& display() const { return display_; }

    // How often the program has waited for an answer: nothing else can have happened in it where the last that it asked
    // for is what it is answered. Until the window manager took its window, and until now.
    int waitsUntilWindow() const { return waitsUntilWindow_; }
    int waits() const { return waits_; }

    // Begins anew to look for what the program draws after an exposure, or from now on.
    void watch(bool fromExposure) {
        exposed_ = 0;
        drawn_ = 0;
        exposed_ = fromExposure ? 0 : now();
    }
    // Milliseconds from there to the last request that follows without a pause: a button that was pressed comes up
    // again after one. None as long as there was no exposure.
    double drawingTime() const { return drawn_ == 0 ? 0 : milliseconds(drawn_ - exposed_); }
    // When the program asked for something last, and the milliseconds since then.
    Clock::time_point lastRequest() const { return Clock::time_point(Clock::duration(lastRequest_)); }
    double quietTime() const;

private:
    static Clock::rep now() { return Clock::now().time_since_epoch().count(); }
    static double milliseconds(Clock::rep ticks);
    void serve();
    void pass(int client, int server);
    void noteRequest();

    std::string server_;
    std::chrono::milliseconds delay_;
    std::string path_;
    std::string display_;
    int listener_ = -1;
    std::atomic<bool> isOver_ = false;
    std::atomic<int> waits_ = 0;
    std::atomic<int> waitsUntilWindow_ = 0;
    std::atomic<Clock::rep> exposed_ = 0;
    std::atomic<Clock::rep> drawn_ = 0;
    std::atomic<Clock::rep> lastRequest_ = 0;
    std::thread thread_;
};

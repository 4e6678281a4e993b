#include "bench/x_proxy.h"

#include <X11/X.h>
#include <X11/Xproto.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <stdexcept>
#include <utility>

namespace {

constexpr const char* kSockets = "/tmp/.X11-unix/X";

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

int socketWith(const std::string& path, int (*use)(int, const sockaddr*, socklen_t)) {
    const int end = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = addressOf(path);
    if (use(end, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        return end;
    }
    close(end);
    return -1;
}

std::size_t words(std::size_t bytes) {
    return (bytes + 3) / 4;
}

// Takes a stream of messages apart. What a message begins with tells how long it is (X11 protocol, "Encoding").
class Messages {
public:
    // `sizeOf` gets the beginning of a message, of `head` bytes the first and of four or more any other, and returns
    // the size of the whole; 0 when it takes more to tell.
    Messages(std::size_t first, std::size_t head, std::function<std::size_t(const std::string&, bool)> sizeOf)
        : wanted_(first), head_(head), sizeOf_(std::move(sizeOf)) {}

    void take(const char* bytes, std::size_t count) {
        while (count > 0) {
            if (skip_ > 0) {
                const std::size_t skipped = std::min(skip_, count);
                skip_ -= skipped;
                bytes += skipped;
                count -= skipped;
                continue;
            }
            begin_ += *bytes++;
            --count;
            if (begin_.size() < wanted_) {
                continue;
            }
            const std::size_t size = sizeOf_(begin_, isFirst_);
            if (size == 0) {
                wanted_ += 4;
                continue;
            }
            skip_ = size - begin_.size();
            begin_.clear();
            wanted_ = head_;
            isFirst_ = false;
        }
    }

private:
    std::string begin_;
    std::size_t wanted_;
    std::size_t head_;
    std::size_t skip_ = 0;
    bool isFirst_ = true;
    std::function<std::size_t(const std::string&, bool)> sizeOf_;
};

template <typename Value>
Value valueAt(const std::string& bytes, std::size_t offset) {
    Value value{};
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

// What is on its way in one direction.
struct Line {
    int from;
    int to;
    std::deque<std::pair<std::chrono::steady_clock::time_point, std::string>> parts;
};

bool readPart(Line& line, std::chrono::milliseconds delay) {
    std::array<char, 65536> bytes{};
    const ssize_t count = read(line.from, bytes.data(), bytes.size());
    if (count > 0) {
        line.parts.emplace_back(std::chrono::steady_clock::now() + delay,
                                std::string(bytes.data(), static_cast<std::size_t>(count)));
    }
    return count > 0;
}

bool writeAll(int to, const std::string& bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const ssize_t count = send(to, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        at += static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace

XProxy::XProxy(const std::string& server, std::chrono::milliseconds delay)
    : server_(kSockets + server.substr(1)), delay_(delay) {
    constexpr int kFirst = 300;
    constexpr int kLast = 399;
    for (int number = kFirst; number <= kLast && listener_ < 0; ++number) {
        display_ = ":" + std::to_string(number);
        path_ = kSockets + std::to_string(number);
        listener_ = socketWith(path_, bind);
    }
    if (listener_ < 0 || listen(listener_, 1) != 0) {
        throw std::runtime_error("no free display");
    }
    thread_ = std::thread(&XProxy::serve, this);
}

XProxy::~XProxy() {
    isOver_ = true;
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
    unlink(path_.c_str());
}

double XProxy::milliseconds(Clock::rep ticks) {
    return std::chrono::duration<double, std::milli>(Clock::duration(ticks)).count();
}

double XProxy::quietTime() const {
    return milliseconds(now() - lastRequest_);
}

void XProxy::serve() {
    const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0) {
        return;
    }
    const int server = socketWith(server_, connect);
    pass(client, server);
    close(client);
    close(server);
}

void XProxy::noteRequest() {
    constexpr double kPause = 50;
    const Clock::rep time = now();
    if (exposed_ != 0 && (drawn_ == 0 || milliseconds(time - drawn_) < kPause)) {
        drawn_ = time;
    }
    lastRequest_ = time;
}

void XProxy::pass(int client, int server) {
    std::uint16_t asked = 0;
    Messages requests(sz_xConnClientPrefix, sz_xReq, [&asked](const std::string& begin, bool isFirst) {
        if (isFirst) {
            const auto prefix = valueAt<xConnClientPrefix>(begin, 0);
            return begin.size() + 4 * (words(prefix.nbytesAuthProto) + words(prefix.nbytesAuthString));
        }
        std::size_t length = valueAt<xReq>(begin, 0).length;
        if (length == 0 && begin.size() > sz_xReq) {
            length = valueAt<std::uint32_t>(begin, sz_xReq);
        }
        asked = static_cast<std::uint16_t>(asked + (length > 0 ? 1 : 0));
        return 4 * length;
    });
    Messages answers(sz_xConnSetupPrefix, sizeof(xEvent), [this, &asked](const std::string& begin, bool isFirst) {
        if (isFirst) {
            return begin.size() + std::size_t{4} * valueAt<xConnSetupPrefix>(begin, 0).length;
        }
        const auto answer = valueAt<xGenericReply>(begin, 0);
        const int type = answer.type & 0x7f;
        if (type == X_Reply && answer.sequenceNumber == asked) {
            ++waits_;
        } else if (type == ReparentNotify && waitsUntilWindow_ == 0) {
            waitsUntilWindow_ = waits_.load();
        } else if (type == Expose && exposed_ == 0) {
            exposed_ = now();
        }
        const bool isLong = type == X_Reply || type == GenericEvent;
        return sizeof(xEvent) + (isLong ? std::size_t{4} * answer.length : 0);
    });

    Line up{client, server, {}};
    Line down{server, client, {}};
    while (!isOver_) {
        Clock::time_point next = Clock::now() + std::chrono::milliseconds(10);
        for (const Line* line : {&up, &down}) {
            next = line->parts.empty() ? next : std::min(next, line->parts.front().first);
        }
        std::array<pollfd, 2> ends{{{client, POLLIN, 0}, {server, POLLIN, 0}}};
        const timespec wait{0, std::max<long>(std::chrono::nanoseconds(next - Clock::now()).count(), 0)};
        ppoll(ends.data(), ends.size(), &wait, nullptr);
        if (ends[0].revents != 0) {
            if (!readPart(up, delay_)) {
                return;
            }
            noteRequest();
            requests.take(up.parts.back().second.data(), up.parts.back().second.size());
        }
        if (ends[1].revents != 0 && !readPart(down, delay_)) {
            return;
        }
        for (Line* line : {&up, &down}) {
            while (!line->parts.empty() && line->parts.front().first <= Clock::now()) {
                const std::string bytes = std::move(line->parts.front().second);
                line->parts.pop_front();
                if (line == &down) {
                    answers.take(bytes.data(), bytes.size());
                }
                if (!writeAll(line->to, bytes)) {
                    return;
                }
            }
        }
    }
}

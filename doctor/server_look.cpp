#include "doctor/server_look.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

#include "installer/driver_process.h"

namespace doctor {

namespace {

using namespace std::string_view_literals;
using Clock = std::chrono::steady_clock;

// A socket, closed with this object.
class Socket {
public:
    Socket(int family, Clock::time_point last)
        : descriptor_(socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)), last_(last) {}
    ~Socket() { close(descriptor_); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    // 0, or why there is no connection.
    int connectTo(const sockaddr* address, socklen_t size) const {
        if (connect(descriptor_, address, size) == 0) {
            return 0;
        }
        if (errno != EINPROGRESS) {
            return errno;
        }
        if (!waitFor(POLLOUT)) {
            return ETIMEDOUT;
        }
        int error = 0;
        socklen_t length = sizeof error;
        getsockopt(descriptor_, SOL_SOCKET, SO_ERROR, &error, &length);
        return error;
    }
    // What the server answers to `question`, which may be empty, in one piece; empty when it says nothing.
    std::string answerTo(std::string_view question) const {
        std::array<char, 512> answer{};
        if (!question.empty() && send(descriptor_, question.data(), question.size(), MSG_NOSIGNAL) < 0) {
            return {};
        }
        const ssize_t size = waitFor(POLLIN) ? recv(descriptor_, answer.data(), answer.size(), 0) : 0;
        return size > 0 ? std::string(answer.data(), static_cast<std::size_t>(size)) : std::string();
    }

private:
    bool waitFor(short event) const {
        pollfd wanted{descriptor_, event, 0};
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(last_ - Clock::now());
        return poll(&wanted, 1, static_cast<int>(std::max(left.count(), decltype(left.count()){0}))) > 0;
    }

    int descriptor_;
    Clock::time_point last_;
};

Encryption offered(bool isOffered) {
    return isOffered ? Encryption::kOffered : Encryption::kNotOffered;
}

// PostgreSQL, "SSLRequest": a server answers with one letter.
Encryption postgreSqlEncryption(const Socket& server) {
    const std::string answer = server.answerTo("\0\0\0\x08\x04\xD2\x16\x2F"sv);
    return answer == "S" || answer == "N" ? offered(answer == "S") : Encryption::kUnknown;
}

// MySQL, "Protocol::HandshakeV10": the server speaks first, and tells its capabilities behind its version.
Encryption mySqlEncryption(const Socket& server) {
    constexpr std::size_t kVersion = 5;
    constexpr std::size_t kCapabilities = 15;  // From the end of the version: thread, salt, filler, low byte.
    constexpr unsigned kTls = 0x0800;
    const std::string answer = server.answerTo({});
    const std::size_t end = answer.find('\0', kVersion);
    if (answer.size() < kVersion || answer[4] != '\x0A' || end == std::string::npos ||
        answer.size() < end + kCapabilities + 1) {
        return Encryption::kUnknown;
    }
    const auto high = static_cast<unsigned char>(answer[end + kCapabilities]);
    return offered((high & (kTls >> 8U)) != 0);
}

// TDS, "PRELOGIN" (MS-TDS 2.2.6.5) with the option of encryption alone; 2 in the answer stands for none.
Encryption tdsEncryption(const Socket& server) {
    constexpr std::size_t kHeader = 8;
    constexpr std::size_t kOption = 5;
    const std::string answer = server.answerTo("\x12\x01\0\x0F\0\0\0\0\x01\0\x06\0\x01\xFF\0"sv);
    for (std::size_t place = kHeader; place + kOption <= answer.size() && answer[place] != '\xFF'; place += kOption) {
        const std::size_t value = kHeader + static_cast<unsigned char>(answer[place + 1]) * 256U +
                                  static_cast<unsigned char>(answer[place + 2]);
        if (answer[place] == '\x01' && value < answer.size()) {
            return offered(answer[value] != '\x02');
        }
    }
    return Encryption::kUnknown;
}

Encryption encryptionOf(const Socket& server, Protocol protocol) {
    switch (protocol) {
        case Protocol::kPostgreSql:
            return postgreSqlEncryption(server);
        case Protocol::kMySql:
            return mySqlEncryption(server);
        case Protocol::kTds:
            return tdsEncryption(server);
        case Protocol::kUnknown:
            break;
    }
    return Encryption::kUnknown;
}

Reach reachOf(int error) {
    switch (error) {
        case 0:
            return Reach::kReached;
        case ECONNREFUSED:
            return Reach::kRefused;
        case ENOENT:
        case ENOTDIR:
        case EACCES:
            return Reach::kNoSocket;
        case ETIMEDOUT:
            return Reach::kSilent;
        default:
            return Reach::kUnreachable;
    }
}

ServerLook lookAtSocket(const ServerAddress& address, Clock::time_point last) {
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    if (address.socket.size() >= sizeof place.sun_path) {
        return {Reach::kNoSocket, Encryption::kUnknown, std::strerror(ENAMETOOLONG)};
    }
    address.socket.copy(place.sun_path, sizeof place.sun_path - 1);
    const Socket server(AF_UNIX, last);
    const int error = server.connectTo(reinterpret_cast<const sockaddr*>(&place), sizeof place);
    return {reachOf(error), Encryption::kUnknown, error != 0 ? std::strerror(error) : ""};
}

ServerLook lookAtHost(const ServerAddress& address, Clock::time_point last) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* answer = nullptr;
    const int error =
        getaddrinfo(address.host.c_str(), address.port.empty() ? nullptr : address.port.c_str(), &hints, &answer);
    if (error != 0) {
        return {Reach::kUnresolved, Encryption::kUnknown, gai_strerror(error)};
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> first(answer, freeaddrinfo);
    ServerLook look;
    if (address.port.empty()) {
        return look;
    }
    for (const addrinfo* one = first.get(); one != nullptr; one = one->ai_next) {
        // One that is silent must not take the time of the others.
        const auto part = one->ai_next != nullptr ? Clock::now() + (last - Clock::now()) / 2 : last;
        const Socket server(one->ai_family, part);
        const int failure = server.connectTo(one->ai_addr, one->ai_addrlen);
        if (failure == 0) {
            return {Reach::kReached, encryptionOf(server, address.protocol)};
        }
        // An address that answers tells more than one without a way to it.
        if (look.reach != Reach::kRefused) {
            look = {reachOf(failure), Encryption::kUnknown, std::strerror(failure)};
        }
    }
    return look;
}

std::string packed(const ServerLook& look) {
    return {std::to_string(static_cast<int>(look.reach)) + std::to_string(static_cast<int>(look.encryption)) +
            look.words};
}

}  // namespace

ServerLook lookAtServer(const ServerAddress& address, std::chrono::milliseconds patience) {
    if (address.socket.empty() && address.host.empty()) {
        return {};
    }
    // Apart, since nothing makes the resolver return before it wants to.
    DriverProcess process([&] {
        const Clock::time_point last = Clock::now() + patience;
        return packed(address.socket.empty() ? lookAtHost(address, last) : lookAtSocket(address, last));
    });
    const std::optional<DriverProcess::End> end = process.waitForEnd(patience + std::chrono::milliseconds(200));
    if (!end || !end->answer) {
        return {Reach::kUnresolved, Encryption::kUnknown, std::strerror(ETIMEDOUT)};
    }
    return {static_cast<Reach>(end->answer->at(0) - '0'), static_cast<Encryption>(end->answer->at(1) - '0'),
            end->answer->substr(2)};
}

}  // namespace doctor

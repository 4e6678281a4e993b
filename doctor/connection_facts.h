// What came of connecting to a data source, and of a look at its server.
#pragma once

#include <string>
#include <vector>

namespace doctor {

// How far the network, or a socket of this machine, leads to the server.
enum class Reach { kNotLooked, kUnresolved, kNoSocket, kRefused, kUnreachable, kSilent, kReached };
enum class Encryption { kUnknown, kOffered, kNotOffered };

struct ServerLook {
    Reach reach = Reach::kNotLooked;
    Encryption encryption = Encryption::kUnknown;
    std::string words{};  // Of the resolver or the system: why it leads no further.
};

struct ConnectionFacts {
    bool connected = false;
    bool isOver = true;  // False when it was ended because it took too long.
    double seconds = 0;
    std::vector<std::string> diagnostics{};  // Each begins with its SQLSTATE, as far as the driver has one.
    std::string server{};
    std::string crash{};    // How the driver ended its process.
    ServerLook look{};      // When it does not connect.
    int databaseError = 0;  // The errno with which the database can't be read that is a file.
};

}  // namespace doctor

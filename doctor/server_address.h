// Where the server of a data source is, worked out from its settings.
#pragma once

#include <string>

#include "doctor/ini_view.h"

namespace doctor {

// What the server speaks, as far as its driver tells.
enum class Protocol { kUnknown, kPostgreSql, kMySql, kTds };

struct ServerAddress {
    Protocol protocol = Protocol::kUnknown;
    std::string host{};               // Empty for a socket of this machine, or when the settings do not say.
    std::string port{};               // A number, or empty.
    std::string socket{};             // The path of a socket of this machine.
    const IniEntry* entry = nullptr;  // That names the host or the socket; null when that is the driver's default.
};

// `library` is the driver's. The entry is that of `section`.
[[nodiscard]] ServerAddress addressOf(const IniSection& section, const std::string& library);

// The path of the database when it is a file; empty otherwise.
[[nodiscard]] const IniEntry* databaseFile(const IniSection& section);

}  // namespace doctor

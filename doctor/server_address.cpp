#include "doctor/server_address.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

#include "doctor/names.h"

namespace doctor {

namespace {

// A driver is known by what its library's name begins with.
struct KnownDriver {
    std::string_view library;
    Protocol protocol;
    const char* port;
};
constexpr std::array kDrivers{
    KnownDriver{"psqlodbc", Protocol::kPostgreSql, "5432"}, KnownDriver{"vhpostgresql", Protocol::kPostgreSql, "5432"},
    KnownDriver{"libmaodbc", Protocol::kMySql, "3306"},     KnownDriver{"libmyodbc", Protocol::kMySql, "3306"},
    KnownDriver{"libtdsodbc", Protocol::kTds, "1433"},      KnownDriver{"vhfreetds", Protocol::kTds, "1433"},
    KnownDriver{"libmsodbcsql", Protocol::kTds, "1433"}};

const IniEntry* firstOf(const IniSection& section, std::initializer_list<const char*> keys) {
    for (const char* key : keys) {
        if (const IniEntry* entry = section.find(key); entry != nullptr && !entry->value.empty()) {
            return entry;
        }
    }
    return nullptr;
}

bool isNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// Takes "tcp:host,port", "host:port", "[address]:port" and "host\instance" apart.
void readHost(std::string_view text, ServerAddress& address) {
    if (text.starts_with("tcp:")) {
        text.remove_prefix(4);
    }
    std::size_t end = text.find_first_of(",\\");
    if (const std::size_t bracket = text.find(']'); text.starts_with('[') && bracket != std::string_view::npos) {
        address.host = text.substr(1, bracket - 1);
        end = bracket + 1;
    } else {
        // Of an address with more than one of them none stands before a port.
        const std::size_t colon = text.find(':');
        end = end == std::string_view::npos && text.find(':', colon + 1) == std::string_view::npos ? colon : end;
        address.host = text.substr(0, end);
    }
    const std::string_view rest = end < text.size() ? text.substr(end) : std::string_view();
    if (rest.starts_with('\\')) {
        // The port of an instance is known to the server alone, unless it is given too.
        const std::size_t comma = rest.find(',');
        address.port = comma != std::string_view::npos ? std::string(rest.substr(comma + 1)) : "";
    } else if (!rest.empty() && isNumber(rest.substr(1))) {
        address.port = rest.substr(1);
    }
}

}  // namespace

ServerAddress addressOf(const IniSection& section, const std::string& library) {
    ServerAddress address;
    const std::string base = baseName(library);
    const auto* const driver = std::find_if(kDrivers.begin(), kDrivers.end(), [&base](const KnownDriver& known) {
        return base.starts_with(known.library);
    });
    const bool isKnown = driver != kDrivers.end();
    address.protocol = isKnown ? driver->protocol : Protocol::kUnknown;
    if (const IniEntry* entry = firstOf(section, {"Port", "PortNumber", "TCPPort", "ServerPort"});
        entry != nullptr && isNumber(entry->value)) {
        address.port = entry->value;
    } else if (isKnown) {
        address.port = driver->port;
    }
    switch (address.protocol) {
        case Protocol::kPostgreSql:
            address.entry = firstOf(section, {"Servername"});
            break;
        case Protocol::kMySql:
            address.entry = firstOf(section, {"Socket", "Server", "Servername"});
            break;
        case Protocol::kTds:
            // What FreeTDS calls Servername is an entry of a file of its own.
            address.entry = firstOf(section, {"Server", "Address", "Servername"});
            break;
        case Protocol::kUnknown:
            address.entry = firstOf(section, {"Server", "Servername", "Host", "Hostname", "HostName", "Address"});
            break;
    }
    const std::string value = address.entry != nullptr ? address.entry->value : "";
    if (address.protocol == Protocol::kPostgreSql && (value.empty() || value.front() == '/')) {
        address.socket = (value.empty() ? "/var/run/postgresql" : value) + "/.s.PGSQL." + address.port;
    } else if (address.protocol == Protocol::kMySql && (value.empty() || value == "localhost")) {
        address.socket = "/run/mysqld/mysqld.sock";
    } else if (value.starts_with('/')) {
        address.socket = value;
    } else if (address.protocol == Protocol::kPostgreSql) {
        address.host = value.substr(0, value.find(','));
    } else if (address.protocol == Protocol::kTds && address.entry != nullptr && address.entry->key.size() > 7) {
        // Only FreeTDS knows where that is.
        address.port.clear();
    } else {
        readHost(value, address);
    }
    return address;
}

const IniEntry* databaseFile(const IniSection& section) {
    const IniEntry* entry = firstOf(section, {"Database", "DBQ", "DatabaseFile", "Dbname"});
    return entry != nullptr && (entry->value.front() == '/' || entry->value.front() == '~') ? entry : nullptr;
}

}  // namespace doctor

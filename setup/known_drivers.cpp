#include "setup/known_drivers.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

using Properties = std::vector<DriverProperty>;

// A driver is known by what its library's name begins with.
struct KnownDriver {
    std::string_view name;
    const char* package;                    // Empty for one of ours.
    Properties (*properties)(bool isFile);  // Null for a driver that describes itself well.
    bool hasEncodedPasswords = false;
};

DriverProperty text(const char* key, const char* help, const char* defaultValue = "") {
    return {key, defaultValue, PropertyKind::kText, {}, help};
}

DriverProperty file(const char* key, const char* help) {
    return {key, "", PropertyKind::kFile, {}, help};
}

DriverProperty password(const char* key) {
    return {key, "", PropertyKind::kPassword, {}, "Password of the database user."};
}

// psqlodbc, as it reads a data source: there it knows neither Server nor UID nor PWD.
Properties postgresql(bool /*isFile*/) {
    return {text("Servername", "Name or address of the database server; without one, a socket of this machine."),
            text("Port", "Port that the server listens on.", "5432"),
            text("Database", "Database to connect to."),
            text("Username", "Database user."),
            password("Password"),
            {"SSLmode",
             "prefer",
             PropertyKind::kMenu,
             {"disable", "allow", "prefer", "require", "verify-ca", "verify-full"},
             "Whether the connection is encrypted and checked."}};
}

Properties mariadb(bool /*isFile*/) {
    return {text("Server", "Name or address of the database server.", "localhost"),
            text("Port", "Port that the server listens on.", "3306"),
            text("Socket", "Socket of a server on this machine."),
            text("Database", "Database to connect to."),
            text("User", "Database user."),
            password("Password"),
            text("Charset", "Character set of the connection."),
            {"ForceTLS", "0", PropertyKind::kMenu, {"0", "1"}, "1 refuses a connection that is not encrypted."},
            {"SSLVerify", "0", PropertyKind::kMenu, {"0", "1"}, "1 checks that the certificate is the server's."},
            file("SSLCA", "Certificates of the authorities that are trusted."),
            file("SSLCert", "Certificate of the client."),
            file("SSLKey", "Private key of the client.")};
}

Properties mdbtools(bool /*isFile*/) {
    return {file("Database", "File of Microsoft Access, .mdb or .accdb.")};
}

// Its own description proposes the protocol 4.2, which sends the password in clear. It takes the login from a
// connection string alone, which the driver manager makes of a file data source and not of a user's.
Properties freetds(bool isFile) {
    const char* loginHelp = isFile ? "" : "For the test alone: FreeTDS does not read it from a data source.";
    Properties properties{
        text("Servername", "Section of freetds.conf that tells server, port and protocol. Not together with Server."),
        text("Server", "Name or address of the database server. Not together with Servername."),
        text("Port", "Port that the server listens on.", "1433"),
        text("Database", "Database to connect to."),
        text("UID", loginHelp),
        {"PWD", "", PropertyKind::kPassword, {}, loginHelp},
        {"TDS_Version",
         "",
         PropertyKind::kCombo,
         {"auto", "7.4", "7.3", "7.2", "7.1", "7.0", "5.0"},
         "5.0 for Sybase, 7.4 for SQL Server 2012 and later. Of its own accord it tries old versions too, in clear."},
        {"Encryption", "", PropertyKind::kMenu, {"off", "request", "require"}, "Whether the connection is encrypted."},
        text("ClientCharset", "Character set of the programs, such as UTF-8."),
        text("Timeout", "Seconds to wait for the server.", "10")};
    if (!isFile) {
        const auto user = properties.begin() + 4;
        user[0].isNeverStored = true;
        user[1].isNeverStored = true;
        properties.insert(
            user + 2,
            {"Login", "not stored: FreeTDS takes it from the program alone", PropertyKind::kFixed, {}, loginHelp});
    }
    return properties;
}

constexpr std::array kDrivers{KnownDriver{"psqlodbc", "odbc-postgresql", postgresql, true},
                              KnownDriver{"vhpostgresql", "", nullptr, true},
                              KnownDriver{"libmaodbc", "odbc-mariadb", mariadb},
                              KnownDriver{"libmdbodbc", "odbc-mdbtools", mdbtools},
                              KnownDriver{"libtdsodbc", "tdsodbc", freetds},
                              KnownDriver{"vhfreetds", "", freetds},
                              KnownDriver{"libsqlite3odbc", "libsqliteodbc", nullptr}};

std::string_view baseName(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

const KnownDriver* find(const std::string& library) {
    const auto* const found = std::find_if(kDrivers.begin(), kDrivers.end(), [&library](const KnownDriver& driver) {
        return baseName(library).starts_with(driver.name);
    });
    return found == kDrivers.end() ? nullptr : found;
}

}  // namespace

std::optional<Properties> knownProperties(const std::string& library, bool isFile) {
    const KnownDriver* driver = find(library);
    return driver != nullptr && driver->properties != nullptr ? std::optional(driver->properties(isFile))
                                                              : std::nullopt;
}

bool hasEncodedPasswords(const std::string& library) {
    const KnownDriver* driver = find(library);
    return driver != nullptr && driver->hasEncodedPasswords;
}

std::string packageOf(const std::string& library) {
    const KnownDriver* driver = find(library);
    return driver != nullptr ? driver->package : "";
}

std::string driverInsteadOf(const std::string& library) {
    return baseName(library) == "libsqliteodbc.so" ? "SQLite3" : "";
}

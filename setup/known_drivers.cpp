#include "setup/known_drivers.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "setup/setup_texts.h"

namespace {

using Properties = std::vector<DriverProperty>;

// How a setting is called in the dialog, and what it is for.
struct Words {
    const char* key;
    SetupMessage::Number label;
    SetupMessage::Number help;
};

// A driver is known by what its library's name begins with.
struct KnownDriver {
    std::string_view name;
    Properties (*properties)(bool isFile);
    bool hasEncodedPasswords = false;
    std::span<const Words> further{};  // Of a driver that describes itself: its settings beyond these properties.
};

DriverProperty text(const char* key, SetupMessage::Number help, const char* defaultValue = "") {
    return {key, defaultValue, PropertyKind::kText, {}, setupText(help)};
}

DriverProperty file(const char* key, SetupMessage::Number help) {
    return {key, "", PropertyKind::kFile, {}, setupText(help)};
}

DriverProperty password(const char* key) {
    return {key, "", PropertyKind::kPassword, {}, setupText(SetupMessage::kHintPassword)};
}

// psqlodbc, as it reads a data source: there it knows neither Server nor UID nor PWD.
Properties postgresql(bool /*isFile*/) {
    return {text("Servername", SetupMessage::kHintServerOrSocket),
            text("Port", SetupMessage::kHintPort, "5432"),
            text("Database", SetupMessage::kHintDatabase),
            text("Username", SetupMessage::kHintUser),
            password("Password"),
            {"SSLmode",
             "prefer",
             PropertyKind::kMenu,
             {"disable", "allow", "prefer", "require", "verify-ca", "verify-full"},
             setupText(SetupMessage::kHintEncryption)}};
}

// What ours describes of psqlodbc beyond them.
constexpr Words kFurtherPostgresql[] = {
    {"ReadOnly", SetupMessage::kLabelReadOnly, SetupMessage::kHintReadOnly},
    {"ShowSystemTables", SetupMessage::kLabelSystemTables, SetupMessage::kHintSystemTables},
    {"ShowOidColumn", SetupMessage::kLabelOidColumn, SetupMessage::kHintOidColumn},
    {"FakeOidIndex", SetupMessage::kLabelOidIndex, SetupMessage::kHintOidIndex},
    {"RowVersioning", SetupMessage::kLabelRowVersioning, SetupMessage::kHintRowVersioning},
    {"UpdatableCursors", SetupMessage::kLabelUpdatableCursors, SetupMessage::kHintUpdatableCursors},
    {"UseDeclareFetch", SetupMessage::kLabelReadInPieces, SetupMessage::kHintReadInPieces},
    {"Fetch", SetupMessage::kLabelPieceSize, SetupMessage::kHintPieceSize},
    {"UseServerSidePrepare", SetupMessage::kLabelPrepareOnServer, SetupMessage::kHintPrepareOnServer},
    {"Protocol", SetupMessage::kLabelRollback, SetupMessage::kHintRollback},
    {"UnknownSizes", SetupMessage::kLabelUnknownSizes, SetupMessage::kHintUnknownSizes},
    {"MaxVarcharSize", SetupMessage::kLabelLongestVarchar, SetupMessage::kHintLongestVarchar},
    {"MaxLongVarcharSize", SetupMessage::kLabelLongestLongVarchar, SetupMessage::kHintLongestLongVarchar},
    {"TextAsLongVarchar", SetupMessage::kLabelTextAsLongVarchar, SetupMessage::kHintTextAsLongVarchar},
    {"UnknownsAsLongVarchar", SetupMessage::kLabelUnknownsAsLongVarchar, SetupMessage::kHintUnknownsAsLongVarchar},
    {"BoolsAsChar", SetupMessage::kLabelBoolsAsChar, SetupMessage::kHintBoolsAsChar},
    {"TrueIsMinus1", SetupMessage::kLabelTrueIsMinus1, SetupMessage::kHintTrueIsMinus1},
    {"ByteaAsLongVarBinary", SetupMessage::kLabelByteaAsLongVarBinary, SetupMessage::kHintByteaAsLongVarBinary},
    {"LFConversion", SetupMessage::kLabelLineEnds, SetupMessage::kHintLineEnds},
    {"LowerCaseIdentifier", SetupMessage::kLabelLowerCase, SetupMessage::kHintLowerCase},
    {"ExtraSysTablePrefixes", SetupMessage::kLabelSystemPrefixes, SetupMessage::kHintSystemPrefixes},
    {"ConnSettings", SetupMessage::kLabelConnectStatements, SetupMessage::kHintConnectStatements},
    {"KeepaliveTime", SetupMessage::kLabelKeepaliveTime, SetupMessage::kHintKeepaliveTime},
    {"KeepaliveInterval", SetupMessage::kLabelKeepaliveInterval, SetupMessage::kHintKeepaliveInterval},
    {"pqopt", SetupMessage::kLabelLibpqParameters, SetupMessage::kHintLibpqParameters},
    {"Debug", SetupMessage::kLabelDriverLog, SetupMessage::kHintDriverLog},
    {"CommLog", SetupMessage::kLabelCommunicationLog, SetupMessage::kHintCommunicationLog},
};

Properties mariadb(bool /*isFile*/) {
    return {text("Server", SetupMessage::kHintServer, "localhost"),
            text("Port", SetupMessage::kHintPort, "3306"),
            text("Socket", SetupMessage::kHintSocket),
            text("Database", SetupMessage::kHintDatabase),
            text("User", SetupMessage::kHintUser),
            password("Password"),
            text("Charset", SetupMessage::kHintCharacterSet),
            {"ForceTLS", "0", PropertyKind::kMenu, {"0", "1"}, setupText(SetupMessage::kHintRequireEncryption)},
            {"SSLVerify", "0", PropertyKind::kMenu, {"0", "1"}, setupText(SetupMessage::kHintCheckCertificate)},
            file("SSLCA", SetupMessage::kHintAuthorities),
            file("SSLCert", SetupMessage::kHintClientCertificate),
            file("SSLKey", SetupMessage::kHintClientKey)};
}

Properties mdbtools(bool /*isFile*/) {
    return {file("Database", SetupMessage::kHintAccessFile)};
}

// Its own description proposes the protocol 4.2, which sends the password in clear. It takes the login from a
// connection string alone, which the driver manager makes of a file data source and not of a user's.
Properties freetds(bool isFile) {
    const std::string loginHelp = isFile ? "" : setupText(SetupMessage::kHintLogin);
    Properties properties{text("Servername", SetupMessage::kHintServerEntry),
                          text("Server", SetupMessage::kHintServerNoEntry),
                          text("Port", SetupMessage::kHintPort, "1433"),
                          text("Database", SetupMessage::kHintDatabase),
                          {"UID", "", PropertyKind::kText, {}, loginHelp},
                          {"PWD", "", PropertyKind::kPassword, {}, loginHelp},
                          {"TDS_Version",
                           "",
                           PropertyKind::kCombo,
                           {"auto", "7.4", "7.3", "7.2", "7.1", "7.0", "5.0"},
                           setupText(SetupMessage::kHintProtocolVersion)},
                          {"Encryption",
                           "",
                           PropertyKind::kMenu,
                           {"off", "request", "require"},
                           setupText(SetupMessage::kHintEncryption)},
                          text("ClientCharset", SetupMessage::kHintCharacterSet),
                          text("Timeout", SetupMessage::kHintTimeout, "10")};
    properties.front().label = setupText(SetupMessage::kLabelServerEntry);
    if (!isFile) {
        const auto user = properties.begin() + 4;
        user[0].isNeverStored = true;
        user[1].isNeverStored = true;
        properties.insert(user + 2, {"Login",
                                     setupText(SetupMessage::kLoginNotStored),
                                     PropertyKind::kFixed,
                                     {},
                                     loginHelp,
                                     setupText(SetupMessage::kLabelLogin)});
    }
    return properties;
}

constexpr std::array kDrivers{
    KnownDriver{"psqlodbc", postgresql, true}, KnownDriver{"vhpostgresql", postgresql, true, kFurtherPostgresql},
    KnownDriver{"libmaodbc", mariadb},         KnownDriver{"libmdbodbc", mdbtools},
    KnownDriver{"libtdsodbc", freetds},        KnownDriver{"vhfreetds", freetds}};

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
    return driver != nullptr && driver->further.empty() ? std::optional(driver->properties(isFile)) : std::nullopt;
}

void explain(const std::string& library, Properties& described) {
    const KnownDriver* driver = find(library);
    if (driver == nullptr || driver->further.empty()) {
        return;
    }
    const Properties known = driver->properties(false);
    for (DriverProperty& property : described) {
        const auto hasKey = [&property](const auto& other) { return other.key == property.key; };
        const auto own = std::find_if(known.begin(), known.end(), hasKey);
        const auto words = std::find_if(driver->further.begin(), driver->further.end(), hasKey);
        if (own != known.end()) {
            property.help = own->help;
        } else if (words != driver->further.end()) {
            property.label = setupText(words->label);
            property.help = setupText(words->help);
        }
    }
}

bool hasEncodedPasswords(const std::string& library) {
    const KnownDriver* driver = find(library);
    return driver != nullptr && driver->hasEncodedPasswords;
}

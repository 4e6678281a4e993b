#include "doctor/connection_findings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string_view>

#include "doctor/names.h"
#include "doctor/server_address.h"
#include "installer/configuration.h"

namespace doctor {

namespace {

using Number = DoctorMessage::Number;

constexpr FindingKind kCrash{Number::kCrash, Severity::kError, "connection-crash"};
constexpr FindingKind kNotFound{Number::kSourceNotFound, Severity::kError, "connection-im002"};
constexpr FindingKind kNotLoaded{Number::kDriverNotLoaded, Severity::kError, "connection-im003"};
constexpr FindingKind kNotStarted{Number::kDriverNotStarted, Severity::kError, "connection-im004"};
constexpr FindingKind kSettingInvalid{Number::kSettingInvalid, Severity::kError, "setting-invalid"};
constexpr FindingKind kNoPassword{Number::kNoPassword, Severity::kError, "login-without-password"};
constexpr FindingKind kLoginRefused{Number::kLoginRefused, Severity::kError, "login-refused"};
constexpr FindingKind kDatabaseUnknown{Number::kDatabaseUnknown, Severity::kError, "database-unknown"};
constexpr FindingKind kDatabaseFile{Number::kDatabaseFile, Severity::kError, "database-file"};
constexpr FindingKind kTooMany{Number::kTooMany, Severity::kError, "too-many-connections"};
constexpr FindingKind kNotAdmitted{Number::kNotAdmitted, Severity::kError, "host-not-admitted"};
constexpr FindingKind kHostUnresolved{Number::kHostUnresolved, Severity::kError, "host-unresolved"};
constexpr FindingKind kNoSocket{Number::kNoSocket, Severity::kError, "socket-missing"};
constexpr FindingKind kPortClosed{Number::kPortClosed, Severity::kError, "port-closed"};
constexpr FindingKind kUnreachable{Number::kUnreachable, Severity::kError, "host-unreachable"};
constexpr FindingKind kSilent{Number::kSilent, Severity::kError, "host-silent"};
constexpr FindingKind kTlsRequired{Number::kTlsRequired, Severity::kError, "tls-required"};
constexpr FindingKind kTlsNotOffered{Number::kTlsNotOffered, Severity::kError, "tls-not-offered"};
constexpr FindingKind kCertificate{Number::kCertificate, Severity::kError, "tls-certificate"};
constexpr FindingKind kTlsFailed{Number::kTlsFailed, Severity::kError, "tls-failed"};
constexpr FindingKind kTimeout{Number::kTimeout, Severity::kError, "connection-timeout"};
constexpr FindingKind kOtherServer{Number::kOtherServer, Severity::kError, "server-of-another-kind"};
constexpr FindingKind kDeadline{Number::kDeadline, Severity::kError, "connection-deadline"};
constexpr FindingKind kServerRefuses{Number::kServerRefuses, Severity::kError, "connection-08001"};
constexpr FindingKind kFails{Number::kFails, Severity::kError, "connection-fails"};

// What drivers say, in lower case; of a row all texts must be there.
struct Saying {
    std::array<std::string_view, 2> texts;
    const FindingKind& kind;
};

// Before a server is asked anything.
constexpr std::array kOfTheManager{
    Saying{{"im002:", ""}, kNotFound},
    Saying{{"im003:", ""}, kNotLoaded},
    Saying{{"can't open lib", ""}, kNotLoaded},
    Saying{{"im004:", ""}, kNotStarted},
    Saying{{"im005:", ""}, kNotStarted},
    Saying{{"invalid sslmode", ""}, kSettingInvalid},
    Saying{{"invalid integer value", ""}, kSettingInvalid},
};

// Of a server that was reached.
constexpr std::array kOfTheServer{
    Saying{{"no password supplied", ""}, kNoPassword},
    Saying{{"access denied", "using password: no"}, kNoPassword},
    Saying{{"password authentication failed", ""}, kLoginRefused},
    Saying{{"access denied", "to database"}, kDatabaseUnknown},
    Saying{{"access denied", ""}, kLoginRefused},
    Saying{{"login failed", ""}, kLoginRefused},
    Saying{{"login incorrect", ""}, kLoginRefused},
    Saying{{"invalid username/password", ""}, kLoginRefused},
    Saying{{"role \"", "does not exist"}, kLoginRefused},
    Saying{{"database \"", "does not exist"}, kDatabaseUnknown},
    Saying{{"unknown database", ""}, kDatabaseUnknown},
    Saying{{"cannot open database", ""}, kDatabaseUnknown},
    Saying{{"3d000:", ""}, kDatabaseUnknown},
    Saying{{"too many connections", ""}, kTooMany},
    Saying{{"too many clients", ""}, kTooMany},
    Saying{{"remaining connection slots", ""}, kTooMany},
    Saying{{"pg_hba.conf", "ssl encryption"}, kNotAdmitted},
    Saying{{"pg_hba.conf", "no encryption"}, kTlsRequired},
    Saying{{"pg_hba.conf", ""}, kNotAdmitted},
    Saying{{"is not allowed to connect", ""}, kNotAdmitted},
    Saying{{"insecure transport", ""}, kTlsRequired},
    Saying{{"28000:", ""}, kLoginRefused},
    Saying{{"28p01:", ""}, kLoginRefused},
};

// When the server was reached and does not speak with us.
constexpr std::array kOfEncryption{
    Saying{{"does not support ssl", ""}, kTlsNotOffered},
    Saying{{"does not support tls", ""}, kTlsNotOffered},
    Saying{{"certificate", ""}, kCertificate},
    Saying{{"ssl", ""}, kTlsFailed},
    Saying{{"tls", ""}, kTlsFailed},
};

constexpr std::array kOfTime{Saying{{"hyt00:", ""}, kTimeout}, Saying{{"hyt01:", ""}, kTimeout}};

constexpr std::array kOfTheRest{Saying{{"08001:", ""}, kServerRefuses}, Saying{{"08s01:", ""}, kServerRefuses},
                                Saying{{"08004:", ""}, kServerRefuses}};

template <std::size_t Count>
const FindingKind* kindIn(const std::array<Saying, Count>& sayings, const std::string& words) {
    for (const Saying& saying : sayings) {
        if (std::all_of(saying.texts.begin(), saying.texts.end(),
                        [&words](std::string_view text) { return words.find(text) != std::string::npos; })) {
            return &saying.kind;
        }
    }
    return nullptr;
}

const FindingKind* kindOf(Reach reach) {
    switch (reach) {
        case Reach::kUnresolved:
            return &kHostUnresolved;
        case Reach::kNoSocket:
            return &kNoSocket;
        case Reach::kRefused:
            return &kPortClosed;
        case Reach::kUnreachable:
            return &kUnreachable;
        case Reach::kSilent:
            return &kSilent;
        case Reach::kNotLooked:
        case Reach::kReached:
            break;
    }
    return nullptr;
}

// `isKnown` when the look knows what to say to such a server.
const FindingKind& kindOf(const ConnectionFacts& facts, const std::string& words, bool isKnown) {
    const bool hasNoTls = facts.look.encryption == Encryption::kNotOffered;
    if (!facts.crash.empty()) {
        return kCrash;
    }
    if (const FindingKind* kind = kindIn(kOfTheManager, words)) {
        return *kind;
    }
    if (const FindingKind* kind = kindIn(kOfTheServer, words)) {
        // One without TLS can't want it, whatever its words suggest.
        return kind == &kTlsRequired && hasNoTls ? kNotAdmitted : *kind;
    }
    if (const FindingKind* kind = kindOf(facts.look.reach)) {
        return *kind;
    }
    if (facts.databaseError != 0) {
        return kDatabaseFile;
    }
    if (const FindingKind* kind = kindIn(kOfEncryption, words)) {
        return hasNoTls ? kTlsNotOffered : *kind;
    }
    if (const FindingKind* kind = kindIn(kOfTime, words)) {
        return *kind;
    }
    if (!facts.isOver) {
        const bool isOther =
            isKnown && facts.look.reach == Reach::kReached && facts.look.encryption == Encryption::kUnknown;
        return isOther ? kOtherServer : kDeadline;
    }
    const FindingKind* kind = kindIn(kOfTheRest, words);
    return kind != nullptr ? *kind : kFails;
}

std::string serverOf(const ServerAddress& address) {
    if (address.socket.empty() && address.host.empty()) {
        return address.entry != nullptr ? address.entry->value : "";
    }
    if (!address.socket.empty()) {
        return address.socket;
    }
    return address.host + (address.port.empty() ? "" : " (" + address.port + ")");
}

}  // namespace

void findConnectionFaults(const Account& account, const DataSource& source, Findings& findings) {
    if (!account.connection || account.connection->connected) {
        return;
    }
    const ConnectionFacts& facts = *account.connection;
    std::string words;
    for (const std::string& record : facts.diagnostics) {
        words += (words.empty() ? "" : " ") + record;
    }
    const ServerAddress address = addressOf(source.section, source.library);
    const bool isKnown = address.protocol != Protocol::kUnknown && address.socket.empty();
    const FindingKind& kind = kindOf(facts, installer::foldedName(words), isKnown);
    const IniEntry* entry = address.entry;
    // %1 the data source, %2 what it is about, %3 what was said, %4 its driver.
    std::string about = kind.text == kHostUnresolved.text ? address.host : serverOf(address);
    std::string said = words.empty() ? "-" : words;
    if (kind.text == kDatabaseFile.text) {
        entry = databaseFile(source.section);
        about = entry->value;
        said = std::strerror(facts.databaseError);
    } else if (kindOf(facts.look.reach) == &kind) {
        said = facts.look.words;
    } else if (kind.text == kDeadline.text) {
        said = std::to_string(std::lround(facts.seconds));
    } else if (kind.text == kCrash.text) {
        said = facts.crash;
    } else if (kind.text == kDatabaseUnknown.text) {
        entry = source.section.find("Database");
    }
    findings.push_back({kind,
                        source.file,
                        entry != nullptr ? entry->line : source.section.line,
                        {source.section.name, about, said, source.section.value("Driver")},
                        source.section.name});
}

}  // namespace doctor

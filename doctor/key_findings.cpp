#include "doctor/key_findings.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "doctor/driver_list.h"
#include "doctor/names.h"
#include "installer/configuration.h"

namespace doctor {

namespace {

constexpr FindingKind kKeyUnknown{DoctorMessage::kKeyUnknown, Severity::kWarning, "key-unknown"};
constexpr FindingKind kKeyUnknownNear{DoctorMessage::kKeyUnknownNear, Severity::kWarning, "key-unknown"};
constexpr FindingKind kKeyNotRead{DoctorMessage::kKeyNotRead, Severity::kError, "key-not-read"};
constexpr FindingKind kLoginNotRead{DoctorMessage::kLoginNotRead, Severity::kWarning, "login-not-read"};

// What the driver manager itself reads, or people write for themselves.
constexpr std::array<std::string_view, 24> kManagerKeys{"driver",          "driver64",      "setup",
                                                        "setup64",         "description",   "trace",
                                                        "tracefile",       "dsn",           "usagecount",
                                                        "threading",       "fileusage",     "dontdlclose",
                                                        "dmenvattr",       "dmconnattr",    "dmstmtattr",
                                                        "cptimeout",       "cptimetolive",  "cpprobe",
                                                        "iconvencoding",   "driverodbcver", "disablegetfunctions",
                                                        "simulatecursors", "fakeunicode",   "pooling"};

// Keys that a driver takes in a connection string and not in a data source.
struct Misplaced {
    std::string_view library;
    std::string_view key;
    const char* right;  // Null when no key does it.
};
constexpr std::array kMisplaced{
    Misplaced{"psqlodbc", "server", "Servername"},   Misplaced{"psqlodbc", "host", "Servername"},
    Misplaced{"psqlodbc", "hostname", "Servername"}, Misplaced{"psqlodbc", "uid", "Username"},
    Misplaced{"psqlodbc", "user", "Username"},       Misplaced{"psqlodbc", "pwd", "Password"},
    Misplaced{"libmaodbc", "username", "User"},      Misplaced{"libtdsodbc", "uid", nullptr},
    Misplaced{"libtdsodbc", "pwd", nullptr},         Misplaced{"libtdsodbc", "username", nullptr},
    Misplaced{"libtdsodbc", "password", nullptr},
};

const Misplaced* misplaced(const std::string& library, const std::string& key) {
    const std::string base = baseName(library);
    const auto* const found = std::find_if(kMisplaced.begin(), kMisplaced.end(), [&](const Misplaced& row) {
        return base.starts_with(row.library) && row.key == key;
    });
    return found == kMisplaced.end() ? nullptr : found;
}

void checkKey(const DataSource& source, const IniEntry& entry, const LibraryFacts* facts, Findings& findings) {
    const std::string key = installer::foldedName(entry.key);
    const auto add = [&](const FindingKind& kind, const std::string& right) {
        findings.push_back({kind,
                            source.file,
                            entry.line,
                            {entry.key, source.section.value("Driver"), right, source.section.name},
                            source.section.name});
    };
    if (const Misplaced* row = misplaced(source.library, key)) {
        if (row->right == nullptr) {
            add(kLoginNotRead, "");
        } else if (source.section.find(row->right) == nullptr) {
            add(kKeyNotRead, row->right);
        }
        return;
    }
    if (facts == nullptr || !facts->foreignKeys.contains(key)) {
        return;
    }
    const std::string near = nearest(entry.key, facts->knownKeys, false);
    const std::vector<std::string>& usual = usualKeys();
    const bool isUsual = std::any_of(usual.begin(), usual.end(),
                                     [&key](const std::string& other) { return installer::sameName(other, key); });
    // What many drivers have may be left over from another driver.
    if (!near.empty() && !isUsual) {
        add(kKeyUnknownNear, near);
    } else if (facts->isDescribed && !isUsual) {
        add(kKeyUnknown, "");
    }
}

}  // namespace

const std::vector<std::string>& usualKeys() {
    static const std::vector<std::string> keys{"Server",   "Servername", "Host",   "Hostname", "Address",  "Port",
                                               "Database", "Username",   "User",   "UID",      "Password", "PWD",
                                               "Socket",   "Charset",    "Option", "SSLMode",  "Timeout",  "ReadOnly"};
    return keys;
}

std::set<std::string> keysForLibrary(const Account& account, const std::string& library) {
    const std::vector<Registered> drivers = registeredDrivers(account);
    std::set<std::string> keys;
    for (const DataSourceFile& file : dataSourceFiles(account)) {
        for (const IniSection& section : file.view.sections) {
            if (!isDataSource(section) || libraryOf(section, drivers) != library) {
                continue;
            }
            for (const IniEntry& entry : section.entries) {
                const std::string key = installer::foldedName(entry.key);
                if (std::find(kManagerKeys.begin(), kManagerKeys.end(), key) == kManagerKeys.end()) {
                    keys.insert(key);
                }
            }
        }
    }
    return keys;
}

void findKeyFaults(const Account& account, Findings& findings) {
    const std::vector<Registered> drivers = registeredDrivers(account);
    for (const DataSourceFile& file : dataSourceFiles(account)) {
        for (const IniSection& section : file.view.sections) {
            // Of two sections the first counts.
            if (!isDataSource(section) || file.view.find(section.name) != &section) {
                continue;
            }
            const DataSource source{file.path, section, libraryOf(section, drivers)};
            const auto facts = account.libraries.find(source.library);
            for (const IniEntry& entry : section.entries) {
                if (section.find(entry.key) == &entry) {
                    checkKey(source, entry, facts != account.libraries.end() ? &facts->second : nullptr, findings);
                }
            }
        }
    }
}

}  // namespace doctor

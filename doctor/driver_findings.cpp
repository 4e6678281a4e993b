#include "doctor/driver_findings.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <set>
#include <string_view>

#include "doctor/driver_list.h"
#include "doctor/names.h"
#include "installer/configuration.h"
#include "installer/debian_packages.h"

namespace doctor {

namespace {

constexpr FindingKind kNoLibraryNamed{DoctorMessage::kNoLibraryNamed, Severity::kError, "driver-without-library"};
constexpr FindingKind kLibraryMissing{DoctorMessage::kLibraryMissing, Severity::kError, "library-missing"};
constexpr FindingKind kLibraryMissingAnywhere{DoctorMessage::kLibraryMissingAnywhere, Severity::kError,
                                              "library-missing"};
constexpr FindingKind kLibraryElsewhere{DoctorMessage::kLibraryElsewhere, Severity::kError, "library-elsewhere"};
constexpr FindingKind kLibraryDeleted{DoctorMessage::kLibraryDeleted, Severity::kError, "library-missing"};
constexpr FindingKind kInNoPackage{DoctorMessage::kInNoPackage, Severity::kError, "library-in-no-package"};
constexpr FindingKind kLibraryUnreadable{DoctorMessage::kLibraryUnreadable, Severity::kError, "library-unreadable"};
constexpr FindingKind kNoLibrary{DoctorMessage::kNoLibrary, Severity::kError, "not-a-library"};
constexpr FindingKind kOtherMachine{DoctorMessage::kOtherMachine, Severity::kError, "library-architecture"};
constexpr FindingKind kNeedsMissing{DoctorMessage::kNeedsMissing, Severity::kError, "dependency-missing"};
constexpr FindingKind kNeedsMissingAnywhere{DoctorMessage::kNeedsMissingAnywhere, Severity::kError,
                                            "dependency-missing"};
constexpr FindingKind kNeedsElsewhere{DoctorMessage::kNeedsElsewhere, Severity::kError, "dependency-not-searched"};
constexpr FindingKind kVersionMissing{DoctorMessage::kVersionMissing, Severity::kError, "version-missing"};
constexpr FindingKind kLoaderRefuses{DoctorMessage::kLoaderRefuses, Severity::kError, "loader-refuses"};
constexpr FindingKind kSymbolMissing{DoctorMessage::kSymbolMissing, Severity::kWarning, "symbol-missing"};
constexpr FindingKind kIsManager{DoctorMessage::kIsManager, Severity::kError, "driver-is-manager"};
constexpr FindingKind kIsSetup{DoctorMessage::kIsSetup, Severity::kError, "driver-is-setup"};
constexpr FindingKind kNoDriverFunctions{DoctorMessage::kNoDriverFunctions, Severity::kError, "not-a-driver"};
constexpr FindingKind kSetupUnusable{DoctorMessage::kSetupUnusable, Severity::kWarning, "setup-unusable"};
constexpr FindingKind kManagers{DoctorMessage::kManagers, Severity::kWarning, "driver-managers"};

// The machine's own list knows better than ours.
std::string packageOf(const std::string& library, const std::string& listed) {
    return listed.empty() ? installer::packageOf(library) : listed;
}

// Some drivers export these functions as well, so the name counts too.
bool isManager(const LibraryFacts& facts) {
    return facts.functions.contains("SQLDataSources") && isManagerName(facts.path);
}

// Where a library is named.
struct Place {
    std::string file;
    std::size_t line;
    std::string about;
};

void checkNeeds(const Place& place, const LibraryFacts& facts, Findings& findings) {
    std::string nowhere;
    std::string packages;
    std::set<std::string> told;
    for (const LibraryFacts::Absent& absent : facts.absent) {
        if (!absent.elsewhere.empty()) {
            findings.push_back(
                {kNeedsElsewhere,
                 place.file,
                 place.line,
                 {facts.path, absent.name, absent.elsewhere, folderOf(absent.elsewhere), absent.neededBy},
                 place.about});
            continue;
        }
        nowhere += (nowhere.empty() ? "" : ", ") + absent.name;
        nowhere += absent.neededBy != facts.path ? " (" + absent.neededBy + ")" : "";
        const std::string package = packageOf(absent.name, absent.package);
        if (!package.empty() && told.insert(package).second) {
            packages += (packages.empty() ? "" : ", ") + package;
        }
    }
    if (!nowhere.empty()) {
        findings.push_back({packages.empty() ? kNeedsMissingAnywhere : kNeedsMissing,
                            place.file,
                            place.line,
                            {facts.path, nowhere, packages},
                            place.about});
    }
    std::map<std::pair<std::string, std::string>, std::string> versions;
    for (const LibraryFacts::AbsentVersion& absent : facts.absentVersions) {
        std::string& names = versions[{absent.library, absent.neededBy}];
        names += (names.empty() ? "" : ", ") + absent.version;
    }
    for (const auto& [key, names] : versions) {
        findings.push_back(
            {kVersionMissing, place.file, place.line, {facts.path, names, key.first, key.second}, place.about});
    }
}

void checkLibrary(const Place& place, const std::string& name, const LibraryFacts& facts, Findings& findings) {
    const std::size_t before = findings.size();
    const auto add = [&](const FindingKind& kind, std::vector<std::string> subjects) {
        subjects.insert(subjects.begin(), facts.path.empty() ? name : facts.path);
        findings.push_back({kind, place.file, place.line, std::move(subjects), place.about});
    };
    switch (facts.kind) {
        case LibraryKind::kMissing:
            if (const std::string other = installer::driverInsteadOf(name); !other.empty()) {
                add(kInNoPackage, {place.about, other});
            } else if (!facts.elsewhere.empty()) {
                add(kLibraryElsewhere, {facts.elsewhere});
            } else if (!facts.package.empty()) {
                add(kLibraryDeleted, {facts.package});
            } else if (const std::string package = installer::packageOf(name); !package.empty()) {
                add(kLibraryMissing, {package});
            } else {
                add(kLibraryMissingAnywhere, {});
            }
            return;
        case LibraryKind::kUnreadable:
            add(kLibraryUnreadable, {std::strerror(facts.error)});
            return;
        case LibraryKind::kNoLibrary:
            add(kNoLibrary, {});
            return;
        case LibraryKind::kOtherMachine:
            add(kOtherMachine, {facts.machine, ownMachine()});
            return;
        case LibraryKind::kLibrary:
            break;
    }
    checkNeeds(place, facts, findings);
    if (findings.size() == before && !facts.loaderWords.empty()) {
        add(kLoaderRefuses, {facts.loaderWords});
    } else if (isManager(facts)) {
        add(kIsManager, {});
    } else if (!isDriver(facts.functions) && facts.functions.contains("ConfigDSN")) {
        add(kIsSetup, {});
    } else if (!isDriver(facts.functions) && findings.size() == before) {
        add(kNoDriverFunctions, {});
    } else if (!facts.missingSymbol.empty() && findings.size() == before) {
        add(kSymbolMissing, {facts.missingSymbol});
    }
}

void checkSetup(const Registered& driver, const Account& account, Findings& findings) {
    const IniEntry* entry = libraryEntry(driver.section, "Setup");
    if (entry == nullptr) {
        return;
    }
    const auto facts = account.setups.find(entry->value);
    if (facts != account.setups.end() &&
        (facts->second.kind != LibraryKind::kLibrary || !facts->second.absent.empty() ||
         !facts->second.functions.contains("ConfigDSN"))) {
        findings.push_back({kSetupUnusable,
                            driver.file,
                            entry->line,
                            {driver.section.name, entry->key, entry->value},
                            driver.section.name});
    }
}

bool isWanted(const Account& account, const std::string& driver) {
    const std::vector<DataSourceFile> files = dataSourceFiles(account);
    return std::any_of(files.begin(), files.end(), [&driver](const DataSourceFile& file) {
        return std::any_of(file.view.sections.begin(), file.view.sections.end(), [&driver](const IniSection& section) {
            return installer::sameName(section.value("Driver"), driver);
        });
    });
}

void checkManagers(const Account& account, Findings& findings) {
    if (account.managers.size() < 2) {
        return;
    }
    std::string list;
    for (const DriverManager& manager : account.managers) {
        list += (list.empty() ? "" : ", ") + manager.path;
        std::string folders;
        for (const std::string& folder : manager.folders) {
            folders += (folders.empty() ? "" : " ") + folder + "/odbcinst.ini";
        }
        list += folders.empty() ? "" : " (" + folders + ")";
    }
    findings.push_back({kManagers, account.managers[1].path, 0, {list, account.managers[0].path, driverFile(account)}});
}

}  // namespace

void findDriverFaults(const Account& account, Findings& findings) {
    for (const Registered& driver : registeredDrivers(account)) {
        const IniEntry* entry = libraryEntry(driver.section, "Driver");
        // Debian registers one and has it in no package: that is no fault as long as nobody wants it.
        if (entry != nullptr && !installer::driverInsteadOf(entry->value).empty() &&
            !isWanted(account, driver.section.name)) {
            continue;
        }
        // Sections of other systems, which people copy.
        const bool isForeign = installer::sameName(driver.section.name, "ODBC Drivers") ||
                               installer::sameName(driver.section.name, "ODBC Connection Pooling");
        if (isForeign && entry == nullptr) {
            continue;
        }
        if (entry == nullptr || entry->value.empty()) {
            findings.push_back(
                {kNoLibraryNamed, driver.file, driver.section.line, {driver.section.name}, driver.section.name});
        } else if (const auto facts = account.libraries.find(entry->value); facts != account.libraries.end()) {
            checkLibrary({driver.file, entry->line, driver.section.name}, entry->value, facts->second, findings);
        }
        checkSetup(driver, account, findings);
    }
    for (const DataSourceFile& file : dataSourceFiles(account)) {
        for (const IniSection& section : file.view.sections) {
            const IniEntry* entry = isDataSource(section) ? section.find("Driver") : nullptr;
            if (entry == nullptr || !entry->value.starts_with('/')) {
                continue;
            }
            const auto facts = account.libraries.find(entry->value);
            if (facts != account.libraries.end()) {
                checkLibrary({file.path, entry->line, section.name}, entry->value, facts->second, findings);
            }
        }
    }
    checkManagers(account, findings);
}

}  // namespace doctor

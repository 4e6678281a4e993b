#include "doctor/driver_list.h"

#include <algorithm>
#include <set>

#include "doctor/names.h"
#include "installer/configuration.h"

namespace doctor {

bool isDriverListName(const std::string& path) {
    return baseName(path).find("odbcinst") != std::string::npos;
}

std::vector<Registered> registeredDrivers(const Account& account) {
    std::vector<Registered> drivers;
    for (const std::string& path : {driverFile(account), userDriverFile(account)}) {
        const ConfigFile* file = findFile(account, path);
        const bool isRead = file != nullptr && refusedLine(file->text) == 0;
        for (const IniSection& section : viewOf(isRead ? file->text : "").sections) {
            const bool isKnown = std::any_of(drivers.begin(), drivers.end(), [&section](const Registered& driver) {
                return installer::sameName(driver.section.name, section.name);
            });
            if (!isKnown && !installer::sameName(section.name, "ODBC")) {
                drivers.push_back({path, section});
            }
        }
    }
    return drivers;
}

const IniEntry* libraryEntry(const IniSection& driver, const std::string& key) {
    const IniEntry* wide = sizeof(void*) == 8 ? driver.find(key + "64") : nullptr;
    return wide != nullptr && !wide->value.empty() ? wide : driver.find(key);
}

std::vector<DataSourceFile> dataSourceFiles(const Account& account) {
    std::vector<DataSourceFile> files;
    std::set<std::string> paths;
    for (const std::string& path : {userFile(account), systemFile(account)}) {
        const ConfigFile* file = findFile(account, path);
        if (file != nullptr && file->error == 0 && refusedLine(file->text) == 0 && !isDriverListName(path) &&
            paths.insert(path).second) {
            files.push_back({path, viewOf(file->text)});
        }
    }
    return files;
}

bool isDataSource(const IniSection& section) {
    return !installer::sameName(section.name, "ODBC") && !installer::sameName(section.name, "Default") &&
           !installer::sameName(section.name, installer::kDataSourceList) && section.find("Driver") != nullptr;
}

std::optional<DataSource> findDataSource(const Account& account, const std::string& name) {
    for (const DataSourceFile& file : dataSourceFiles(account)) {
        if (const IniSection* section = file.view.find(name)) {
            return DataSource{file.path, *section, libraryOf(*section, registeredDrivers(account))};
        }
    }
    return std::nullopt;
}

std::string libraryOf(const IniSection& dataSource, const std::vector<Registered>& drivers) {
    std::string name = dataSource.value("Driver");
    if (name.starts_with('/')) {
        return name;
    }
    for (const Registered& driver : drivers) {
        if (installer::sameName(driver.section.name, name)) {
            const IniEntry* entry = libraryEntry(driver.section, "Driver");
            return entry != nullptr ? entry->value : "";
        }
    }
    return {};
}

NamedLibraries namedLibraries(const Account& account) {
    std::set<std::string> drivers;
    std::set<std::string> setups;
    for (const Registered& driver : registeredDrivers(account)) {
        for (const auto& [key, names] : {std::pair{"Driver", &drivers}, {"Setup", &setups}}) {
            if (const IniEntry* entry = libraryEntry(driver.section, key); entry != nullptr && !entry->value.empty()) {
                names->insert(entry->value);
            }
        }
    }
    for (const DataSourceFile& file : dataSourceFiles(account)) {
        for (const IniSection& section : file.view.sections) {
            if (isDataSource(section) && section.value("Driver").starts_with('/')) {
                drivers.insert(section.value("Driver"));
            }
        }
    }
    return {{drivers.begin(), drivers.end()}, {setups.begin(), setups.end()}};
}

}  // namespace doctor

#include "setup/user_dsn_store.h"

#include <odbcinst.h>

#include <algorithm>
#include <array>

#include "installer/configuration_change.h"
#include "installer/configuration_reader.h"
#include "motifutil/change_report.h"
#include "setup/setup_texts.h"

using installer::sameName;

namespace {

bool isReservedName(const std::string& name) {
    constexpr std::array kReserved{"ODBC", installer::kDataSourceList, "ODBC File DSN"};
    return std::any_of(kReserved.begin(), kReserved.end(),
                       [&name](const char* reserved) { return sameName(name, reserved); });
}

std::string listedDriver(const std::string& name) {
    return installer::ConfigurationReader(installer::kDataSourceFile).readValue(installer::kDataSourceList, name);
}

// Carries out the change; the text of a failure is about the data source `name`.
std::optional<SetupFailure> commit(const installer::ConfigurationChange& file, SetupMessage::Number text,
                                   const std::string& name) {
    if (const std::optional<installer::ChangeFailure> failure = file.commit()) {
        return SetupFailure{ODBC_ERROR_REQUEST_FAILED, setupText(text, name) + "\n\n" + changeReport(*failure), {}};
    }
    return std::nullopt;
}

}  // namespace

bool isListed(const std::string& name) {
    return !listedDriver(name).empty();
}

bool dataSourceExists(const std::string& name) {
    installer::ConfigurationReader file(installer::kDataSourceFile);
    return !file.readValue(installer::kDataSourceList, name).empty() ||
           !file.listKeys(name, installer::Growth::kByDoubling).names.empty();
}

Settings readDataSource(const std::string& name) {
    return installer::readSection(name, installer::kDataSourceFile);
}

std::optional<SetupFailure> checkName(const std::string& name) {
    if (name.empty()) {
        return SetupFailure{ODBC_ERROR_INVALID_DSN, setupText(SetupMessage::kNameMissing), {}};
    }
    // In the list of data sources a name is a key, so it must not look like a comment.
    if (!installer::isValidDataSourceName(name) || name.front() == '#' || hasControlCharacter(name)) {
        return SetupFailure{ODBC_ERROR_INVALID_DSN, setupText(SetupMessage::kNameInvalid, name), {}};
    }
    if (isReservedName(name)) {
        return SetupFailure{ODBC_ERROR_INVALID_DSN, setupText(SetupMessage::kNameReserved, name), {}};
    }
    return std::nullopt;
}

Settings settingsAfter(const DataSourceChange& change) {
    const bool isNew = change.storedName.empty();
    Settings settings = isNew ? Settings() : change.stored;
    if (isNew || !sameName(listedDriver(change.storedName), change.driver)) {
        setValue(settings, kDriverKey, change.driver);
    }
    applyChanges(change.values, settings);
    return settings;
}

std::optional<SetupFailure> saveDataSource(const DataSourceChange& change) {
    const bool isNew = change.storedName.empty();
    const bool renamed = !isNew && change.storedName != change.name;
    // A name that was stored stays usable, whoever stored it.
    if (isNew || renamed) {
        if (std::optional<SetupFailure> failure = checkName(change.name)) {
            return failure;
        }
    }
    if (std::optional<SetupFailure> failure = checkSettings(change.values)) {
        return failure;
    }

    DataSourceChange current = change;
    if (renamed) {
        // The old section goes, so what other programs wrote into it meanwhile comes along.
        current.stored = readDataSource(change.storedName);
    }
    const Settings wanted = settingsAfter(current);
    installer::ConfigurationChange file;
    if (renamed) {
        // First, since a name that differs in case alone is the same section to the file.
        file.removeDataSource(change.storedName);
    }
    const bool isRespelled = renamed && sameName(change.storedName, change.name);
    // One that went while the dialog was open is written whole.
    const bool isThere = !isNew && !renamed && isListed(change.name);
    const Settings present = isThere ? change.stored : readDataSource(change.name);
    // SQLWriteDSNToIni is of no use, it empties the section and leaves the list as it is.
    writeChanges(isRespelled ? Settings() : present, wanted,
                 [&](const std::string& key, const char* value) { file.write(change.name, key, value); });
    if (isRespelled || !sameName(listedDriver(change.name), change.driver)) {
        file.write(installer::kDataSourceList, change.name, change.driver.c_str());
    }
    return commit(file, SetupMessage::kWriteFailed, change.name);
}

std::optional<SetupFailure> deleteDataSource(const std::string& name) {
    installer::ConfigurationChange file;
    file.removeDataSource(name);
    return commit(file, SetupMessage::kRemoveFailed, name);
}

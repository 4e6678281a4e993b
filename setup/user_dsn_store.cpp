#include "setup/user_dsn_store.h"

#include <odbcinst.h>

#include <algorithm>
#include <array>

#include "setup/setup_texts.h"

using installer::sameName;

namespace {

bool isReservedName(const std::string& name) {
    constexpr std::array kReserved{"ODBC", installer::kDataSourceList, "ODBC File DSN"};
    return std::any_of(kReserved.begin(), kReserved.end(),
                       [&name](const char* reserved) { return sameName(name, reserved); });
}

std::string listedDriver(const std::string& name) {
    return installer::readValue(installer::kDataSourceList, name, installer::kDataSourceFile);
}

// Makes the section `name`, which holds `present`, hold exactly `wanted`, and lists it. The list comes last: a data
// source that is listed without settings can't be read. SQLWriteDSNToIni is of no use, it empties the section and
// leaves the list as it is.
bool writeSection(const std::string& name, const std::string& driver, const Settings& present, const Settings& wanted) {
    const auto write = [&name](const std::string& key, const char* value) {
        return installer::writeValue(name, key, value, installer::kDataSourceFile);
    };
    if (!writeChanges(present, wanted, write)) {
        return false;
    }
    return sameName(listedDriver(name), driver) ||
           installer::writeValue(installer::kDataSourceList, name, driver.c_str(), installer::kDataSourceFile);
}

// Gives a data source a name that differs in case alone. To the files that is the same section, so the old one has to
// go first; should the new one fail, the old one is written again.
bool respell(const std::string& oldName, const std::string& newName, const std::string& driver, const Settings& before,
             const Settings& wanted) {
    const std::string oldDriver = listedDriver(oldName);
    if (!installer::removeDataSource(oldName)) {
        return false;
    }
    if (!writeSection(newName, driver, {}, wanted)) {
        writeSection(oldName, oldDriver, readDataSource(oldName), before);
        return false;
    }
    return true;
}

}  // namespace

bool isListed(const std::string& name) {
    return !listedDriver(name).empty();
}

bool dataSourceExists(const std::string& name) {
    return isListed(name) ||
           !installer::listKeys(name, installer::kDataSourceFile, installer::Growth::kByDoubling).names.empty();
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

    Settings wanted = isNew ? Settings() : change.stored;
    if (isNew || !sameName(listedDriver(change.storedName), change.driver)) {
        setValue(wanted, kDriverKey, change.driver);
    }
    applyChanges(change.values, wanted);

    const bool respelled = renamed && sameName(change.storedName, change.name);
    bool written = false;
    if (respelled) {
        written = respell(change.storedName, change.name, change.driver, change.stored, wanted);
    } else {
        // One that went while the dialog was open is written whole.
        const bool isThere = !isNew && !renamed && isListed(change.name);
        written =
            writeSection(change.name, change.driver, isThere ? change.stored : readDataSource(change.name), wanted);
    }
    if (!written) {
        return SetupFailure{ODBC_ERROR_REQUEST_FAILED, setupText(SetupMessage::kWriteFailed, change.name), {}};
    }
    if (renamed && !respelled) {
        return deleteDataSource(change.storedName);
    }
    return std::nullopt;
}

std::optional<SetupFailure> deleteDataSource(const std::string& name) {
    if (!installer::removeDataSource(name)) {
        return SetupFailure{ODBC_ERROR_REQUEST_FAILED, setupText(SetupMessage::kRemoveFailed, name), {}};
    }
    return std::nullopt;
}

#include "setup/file_dsn_store.h"

#include <odbcinst.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "installer/configuration_reader.h"
#include "installer/file_dsn.h"
#include "motifutil/change_report.h"
#include "setup/setup_texts.h"

using installer::Attribute;

namespace {

// The installer library keeps longer names to itself, with no word.
constexpr std::size_t kLongestPath = 1023;

// What the file is to hold after the change.
Settings merge(const Settings& stored, const DataSourceChange& change) {
    Settings wanted = stored;
    if (!installer::sameName(installer::driverName(valueOf(wanted, kDriverKey)), change.driver)) {
        setValue(wanted, kDriverKey, change.driver);
    }
    applyChanges(change.values, wanted);
    return wanted;
}

bool holdsPassword(const Settings& settings) {
    return std::any_of(settings.begin(), settings.end(), [](const Attribute& setting) {
        return installer::isPasswordKey(setting.key) && !setting.value.empty();
    });
}

}  // namespace

std::optional<SetupFailure> checkFileName(const std::string& path) {
    if (!path.starts_with('/') || path.ends_with('/') || path.size() > kLongestPath) {
        return SetupFailure{ODBC_ERROR_INVALID_PATH, setupText(SetupMessage::kFileNameInvalid, path), {}};
    }
    return std::nullopt;
}

bool fileExists(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 || errno != ENOENT;
}

Settings readFileDataSource(const std::string& path) {
    Settings settings;
    SettingIndex index;
    for (Attribute& setting : installer::readSection(installer::kFileDsnSection, path)) {
        // Of a key that stands there twice every program reads the first.
        if (!index.find(setting.key)) {
            index.add(setting.key);
            settings.push_back(std::move(setting));
        }
    }
    return settings;
}

std::optional<SetupFailure> saveFileDataSource(const DataSourceChange& change) {
    if (std::optional<SetupFailure> failure = checkSettings(change.values)) {
        return failure;
    }
    const bool isNew = change.storedName.empty();
    const Settings stored = isNew ? Settings() : readFileDataSource(change.name);
    const Settings wanted = merge(stored, change);
    installer::ConfigurationChange file(change.name, isNew);
    if (holdsPassword(wanted)) {
        file.makeOwnerOnly();
    }
    writeChanges(stored, wanted, [&file](const std::string& key, const char* value) {
        file.write(installer::kFileDsnSection, key, value);
    });
    if (const std::optional<installer::ChangeFailure> failure = file.commit()) {
        return SetupFailure{ODBC_ERROR_REQUEST_FAILED,
                            setupText(SetupMessage::kFileNotWritten, change.name) + "\n\n" + changeReport(*failure),
                            {}};
    }
    return std::nullopt;
}

#include "setup/data_source.h"

#include <odbcinst.h>

#include <algorithm>
#include <array>
#include <cctype>

#include "setup/setup_texts.h"

using installer::Attribute;
using installer::sameName;

namespace {

bool isReservedName(const std::string& name) {
    constexpr std::array kReserved{"ODBC", installer::kDataSourceList, "ODBC File DSN"};
    return std::any_of(kReserved.begin(), kReserved.end(),
                       [&name](const char* reserved) { return sameName(name, reserved); });
}

bool hasControlCharacter(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char byte) { return std::iscntrl(byte) != 0; });
}

std::string listedDriver(const std::string& name) {
    return installer::readValue(installer::kDataSourceList, name, installer::kDataSourceFile);
}

// Makes the section `name` hold exactly `wanted`, and lists it. The list comes last: a data source that is listed
// without settings can't be read. SQLWriteDSNToIni is of no use, it empties the section and leaves the list as it is.
bool writeSection(const std::string& name, const std::string& driver, const Settings& wanted) {
    const auto write = [&name](const std::string& key, const char* value) {
        return installer::writeValue(name, key, value, installer::kDataSourceFile);
    };
    if (!writeChanges(readDataSource(name), wanted, write)) {
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
    if (!writeSection(newName, driver, wanted)) {
        writeSection(oldName, oldDriver, before);
        return false;
    }
    return true;
}

}  // namespace

const std::string* findValue(const Settings& settings, std::string_view key) {
    const auto found = std::find_if(settings.begin(), settings.end(),
                                    [key](const Attribute& setting) { return sameName(setting.key, key); });
    return found == settings.end() ? nullptr : &found->value;
}

std::string valueOf(const Settings& settings, std::string_view key) {
    const std::string* value = findValue(settings, key);
    return value == nullptr ? std::string() : *value;
}

void setValue(Settings& settings, const std::string& key, const std::string& value) {
    const auto found = std::find_if(settings.begin(), settings.end(),
                                    [&key](const Attribute& setting) { return sameName(setting.key, key); });
    if (found == settings.end()) {
        settings.push_back({key, value});
    } else {
        found->value = value;
    }
}

std::string trimmed(std::string_view text) {
    const std::string_view blanks = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}

std::string oneLine(std::string_view text) {
    std::string line;
    for (const char byte : text) {
        const bool isBlank = std::string_view(" \t\r\n\v\f").find(byte) != std::string_view::npos;
        if (!isBlank || (!line.empty() && line.back() != ' ')) {
            line += isBlank ? ' ' : byte;
        }
    }
    return trimmed(line);
}

bool isNamingKey(std::string_view key) {
    constexpr std::array kKeys{kNameKey, kDriverKey, "FILEDSN", "SAVEFILE"};
    return std::any_of(kKeys.begin(), kKeys.end(), [key](const char* other) { return sameName(key, other); });
}

bool isPasswordKey(std::string_view key) {
    constexpr std::array<std::string_view, 5> kMarks{"password", "passwd", "pwd", "passphrase", "secret"};
    std::string lower(key);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
    return std::any_of(kMarks.begin(), kMarks.end(),
                       [&lower](std::string_view mark) { return lower.find(mark) != std::string::npos; });
}

bool dataSourceExists(const std::string& name) {
    return !listedDriver(name).empty() ||
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

std::optional<SetupFailure> checkSetting(const Attribute& setting) {
    const auto wrong = [&setting](SetupMessage::Number text) {
        return SetupFailure{ODBC_ERROR_INVALID_KEYWORD_VALUE, setupText(text, setting.key), setting.key};
    };
    const std::string& key = setting.key;
    if (key.empty() || key != trimmed(key) || key.find_first_of("[#;") == 0 || key.find('=') != std::string::npos ||
        hasControlCharacter(key)) {
        return wrong(SetupMessage::kKeyInvalid);
    }
    if (setting.value.find_first_of("\r\n") != std::string::npos) {
        return wrong(SetupMessage::kValueHasLineBreak);
    }
    if (key.size() + 1 + setting.value.size() > installer::kLongestLine) {
        return wrong(SetupMessage::kValueTooLong);
    }
    return std::nullopt;
}

std::optional<SetupFailure> checkSettings(const Settings& settings) {
    for (const Attribute& setting : settings) {
        if (std::optional<SetupFailure> failure = checkSetting(setting)) {
            return failure;
        }
    }
    return std::nullopt;
}

void applyChanges(const Settings& changes, Settings& settings) {
    for (const Attribute& change : changes) {
        if (isNamingKey(change.key)) {
            continue;
        }
        const std::string value = trimmed(change.value);
        if (!value.empty()) {
            setValue(settings, change.key, value);
        } else if (!valueOf(settings, change.key).empty()) {
            std::erase_if(settings, [&change](const Attribute& setting) { return sameName(setting.key, change.key); });
        }
    }
}

bool writeChanges(const Settings& present, const Settings& wanted, const SettingWriter& write) {
    for (const Attribute& old : present) {
        if (findValue(wanted, old.key) == nullptr && !write(old.key, nullptr)) {
            return false;
        }
    }
    return std::all_of(wanted.begin(), wanted.end(), [&](const Attribute& setting) {
        const std::string* old = findValue(present, setting.key);
        return (old != nullptr && *old == setting.value) || write(setting.key, setting.value.c_str());
    });
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

    installer::forgetCachedValues();
    const Settings before = isNew ? Settings() : readDataSource(change.storedName);
    Settings wanted = before;
    if (isNew || !sameName(listedDriver(change.storedName), change.driver)) {
        setValue(wanted, kDriverKey, change.driver);
    }
    applyChanges(change.values, wanted);

    const bool written = renamed && sameName(change.storedName, change.name)
                             ? respell(change.storedName, change.name, change.driver, before, wanted)
                             : writeSection(change.name, change.driver, wanted);
    if (!written) {
        return SetupFailure{ODBC_ERROR_REQUEST_FAILED, setupText(SetupMessage::kWriteFailed, change.name), {}};
    }
    if (renamed && !sameName(change.storedName, change.name)) {
        return removeDataSource(change.storedName);
    }
    return std::nullopt;
}

std::optional<SetupFailure> removeDataSource(const std::string& name) {
    if (!installer::removeDataSource(name)) {
        return SetupFailure{ODBC_ERROR_REQUEST_FAILED, setupText(SetupMessage::kRemoveFailed, name), {}};
    }
    return std::nullopt;
}

#include "setup/settings.h"

#include <odbcinst.h>

#include <algorithm>
#include <array>
#include <cctype>

#include "setup/setup_texts.h"

using installer::Attribute;
using installer::sameName;

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

SettingIndex::SettingIndex(const Settings& settings) {
    for (const Attribute& setting : settings) {
        add(setting.key);
    }
}

std::optional<std::size_t> SettingIndex::find(std::string_view key) const {
    const auto found = places_.find(installer::foldedName(key));
    return found == places_.end() ? std::nullopt : std::optional(found->second);
}

bool SettingIndex::add(std::string_view key) {
    return places_.emplace(installer::foldedName(key), size_++).second;
}

void setValue(Settings& settings, SettingIndex& index, const std::string& key, const std::string& value) {
    if (const std::optional<std::size_t> place = index.find(key)) {
        settings[*place].value = value;
    } else {
        index.add(key);
        settings.push_back({key, value});
    }
}

bool isNamingKey(std::string_view key) {
    constexpr std::array kKeys{kNameKey, kDriverKey, "FILEDSN", "SAVEFILE"};
    return std::any_of(kKeys.begin(), kKeys.end(), [key](const char* other) { return sameName(key, other); });
}

std::optional<SetupFailure> checkSetting(const Attribute& setting) {
    const auto wrong = [&setting](SetupMessage::Number text) {
        return SetupFailure{ODBC_ERROR_INVALID_KEYWORD_VALUE, setupText(text, setting.key), setting.key};
    };
    const std::string& key = setting.key;
    if (key.empty() || key != installer::trimmed(key) || key.find_first_of("[#;") == 0 ||
        key.find('=') != std::string::npos || hasControlCharacter(key)) {
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
        const std::string value = installer::trimmed(change.value);
        if (!value.empty()) {
            setValue(settings, change.key, value);
        } else if (!valueOf(settings, change.key).empty()) {
            std::erase_if(settings, [&change](const Attribute& setting) { return sameName(setting.key, change.key); });
        }
    }
}

void writeChanges(const Settings& present, const Settings& wanted, const SettingWriter& write) {
    const SettingIndex kept(wanted);
    for (const Attribute& old : present) {
        if (!kept.find(old.key)) {
            write(old.key, nullptr);
        }
    }
    const SettingIndex before(present);
    for (const Attribute& setting : wanted) {
        const std::optional<std::size_t> old = before.find(setting.key);
        if (!old || present[*old].value != setting.value) {
            write(setting.key, setting.value.c_str());
        }
    }
}

bool hasControlCharacter(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char byte) { return std::iscntrl(byte) != 0; });
}

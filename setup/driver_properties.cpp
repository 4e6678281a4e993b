#include "setup/driver_properties.h"

#include <dlfcn.h>
#include <odbcinstext.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <set>
#include <sstream>
#include <string_view>

#include "bos/library.h"
#include "installer/configuration.h"
#include "installer/driver_process.h"
#include "setup/driver_files.h"
#include "setup/settings.h"

namespace {

// No driver has that many; a list that does not end is cut here.
constexpr std::size_t kMostProperties = 1000;
constexpr std::size_t kMostChoices = 1000;

constexpr const char* kUserKey = "UID";
constexpr const char* kPasswordKey = "PWD";

// The driver allocates the nodes, their arrays of choices and their help texts with malloc, and its caller frees them,
// as the installer library does; the choices themselves stay the driver's.
void freeProperties(ODBCINSTPROPERTY* first) {
    std::set<ODBCINSTPROPERTY*> freed;
    while (first != nullptr && freed.insert(first).second) {
        ODBCINSTPROPERTY* next = first->pNext;
        std::free(static_cast<void*>(first->aPromptData));
        std::free(first->pszHelp);
        std::free(first);
        first = next;
    }
}
struct PropertiesDeleter {
    void operator()(ODBCINSTPROPERTY* first) const { freeProperties(first); }
};

template <std::size_t Size>
std::string textOf(const char (&text)[Size]) {
    return {text, strnlen(text, Size)};
}

std::vector<std::string> choicesOf(const ODBCINSTPROPERTY& property) {
    std::vector<std::string> choices;
    for (char** choice = property.aPromptData; choice != nullptr && *choice != nullptr && choices.size() < kMostChoices;
         ++choice) {
        choices.emplace_back(*choice);
    }
    return choices;
}

PropertyKind kindOf(int promptType, const std::string& key, bool hasChoices) {
    switch (promptType) {
        case ODBCINST_PROMPTTYPE_LABEL:
            return PropertyKind::kFixed;
        case ODBCINST_PROMPTTYPE_HIDDEN:
            return PropertyKind::kHidden;
        case ODBCINST_PROMPTTYPE_LISTBOX:
            return hasChoices ? PropertyKind::kMenu : PropertyKind::kText;
        case ODBCINST_PROMPTTYPE_COMBOBOX:
            return hasChoices ? PropertyKind::kCombo : PropertyKind::kText;
        case ODBCINST_PROMPTTYPE_TEXTEDIT_PASSWORD:
            return PropertyKind::kPassword;
        case ODBCINST_PROMPTTYPE_FILENAME:
            return PropertyKind::kFile;
        default:
            // Older drivers describe their passwords as plain text.
            return installer::isPasswordKey(key) ? PropertyKind::kPassword : PropertyKind::kText;
    }
}

bool isWanted(const std::string& key, const std::vector<DriverProperty>& properties) {
    using installer::sameName;
    return !key.empty() && !sameName(key, kNameKey) && !sameName(key, kDriverKey) && !sameName(key, kDescriptionKey) &&
           std::none_of(properties.begin(), properties.end(),
                        [&key](const DriverProperty& other) { return sameName(other.key, key); });
}

std::vector<DriverProperty> copyProperties(const ODBCINSTPROPERTY* node) {
    std::vector<DriverProperty> properties;
    for (std::size_t count = 0; node != nullptr && count < kMostProperties; node = node->pNext, ++count) {
        DriverProperty property;
        property.key = installer::trimmed(textOf(node->szName));
        property.defaultValue = installer::trimmed(textOf(node->szValue));
        property.choices = choicesOf(*node);
        property.help = installer::oneLine(node->pszHelp == nullptr ? "" : node->pszHelp);
        property.kind = kindOf(node->nPromptType, property.key, !property.choices.empty());
        if (isWanted(property.key, properties)) {
            properties.push_back(std::move(property));
        }
    }
    return properties;
}

// What the driver describes, asked in this process.
std::vector<DriverProperty> describedBy(const std::string& library) {
    const std::unique_ptr<void, LibraryCloser> handle(dlopen(driverPath(library).c_str(), RTLD_LAZY | RTLD_LOCAL));
    const auto getProperties =
        handle ? reinterpret_cast<int (*)(HODBCINSTPROPERTY)>(dlsym(handle.get(), "ODBCINSTGetProperties")) : nullptr;
    if (getProperties == nullptr) {
        return {};
    }
    // The driver appends to a list that begins with the name, which is no setting.
    const std::unique_ptr<ODBCINSTPROPERTY, PropertiesDeleter> list(
        static_cast<ODBCINSTPROPERTY*>(std::calloc(1, sizeof(ODBCINSTPROPERTY))));
    if (!list) {
        throw std::bad_alloc();
    }
    std::strcpy(list->szName, "Name");
    list->nPromptType = ODBCINST_PROMPTTYPE_TEXTEDIT;
    // Drivers do not agree about what they return, so only the list counts.
    getProperties(list.get());
    return copyProperties(list->pNext);
}

// The properties as they pass from one process to the other: all their texts and numbers, each with a terminator.
std::string packed(const std::vector<DriverProperty>& properties) {
    std::string text;
    const auto add = [&text](const std::string& item) { text += item + '\0'; };
    for (const DriverProperty& property : properties) {
        add(property.key);
        add(property.defaultValue);
        add(property.help);
        add(std::to_string(static_cast<int>(property.kind)));
        add(std::to_string(property.choices.size()));
        std::for_each(property.choices.begin(), property.choices.end(), add);
    }
    return text;
}

std::vector<DriverProperty> unpacked(const std::string& text) {
    std::vector<DriverProperty> properties;
    std::istringstream items(text);
    const auto next = [&items] {
        std::string item;
        std::getline(items, item, '\0');
        return item;
    };
    for (std::string key = next(); !key.empty(); key = next()) {
        DriverProperty property;
        property.key = key;
        property.defaultValue = next();
        property.help = next();
        property.kind = static_cast<PropertyKind>(std::stoi(next()));
        property.choices.resize(std::stoul(next()));
        std::generate(property.choices.begin(), property.choices.end(), next);
        properties.push_back(std::move(property));
    }
    return properties;
}

bool hasPart(const DriverProperty& property, std::initializer_list<const char*> parts) {
    return std::any_of(parts.begin(), parts.end(),
                       [&property](const char* part) { return strcasestr(property.key.c_str(), part) != nullptr; });
}

bool hasPart(const std::vector<DriverProperty>& properties, std::initializer_list<const char*> parts) {
    return std::any_of(properties.begin(), properties.end(),
                       [parts](const DriverProperty& property) { return hasPart(property, parts); });
}

// A driver of a server takes user and password, by the keywords that ODBC gives them (SQLDriverConnect), even if it
// does not describe them: FreeTDS is one. A driver of files knows no login.
void addLogin(std::vector<DriverProperty>& properties) {
    const bool hasPassword = std::any_of(properties.begin(), properties.end(), [](const DriverProperty& property) {
        return property.kind == PropertyKind::kPassword;
    });
    if (hasPassword || hasPart(properties, {"uid", "user"}) || !hasPart(properties, {"server", "host", "address"})) {
        return;
    }
    auto place = std::find_if(properties.begin(), properties.end(), [](const DriverProperty& property) {
        return installer::sameName(property.key, "Database");
    });
    place = place == properties.end() ? place : place + 1;
    place = properties.insert(place, {kUserKey, "", PropertyKind::kText, {}});
    properties.insert(place + 1, {kPasswordKey, "", PropertyKind::kPassword, {}});
}

}  // namespace

std::optional<std::vector<DriverProperty>> askDriver(const std::string& library) {
    constexpr std::chrono::seconds kPatience(2);
    DriverProcess process([&library] { return packed(describedBy(library)); });
    const std::optional<DriverProcess::End> end = process.waitForEnd(kPatience);
    std::vector<DriverProperty> properties =
        end && end->answer ? unpacked(*end->answer) : std::vector<DriverProperty>();
    if (properties.empty()) {
        return std::nullopt;
    }
    addLogin(properties);
    return properties;
}

SettingGroup groupOf(const DriverProperty& property) {
    if (hasPart(property, {"ssl", "tls", "encrypt", "cert", "auth", "kerberos", "krb", "trust"})) {
        return SettingGroup::kSecurity;
    }
    constexpr std::array<std::string_view, 10> kBeginnings{"server",   "host", "address", "port",  "socket",
                                                           "database", "uid",  "user",    "login", "schema"};
    const bool isGeneral = property.kind == PropertyKind::kPassword ||
                           std::any_of(kBeginnings.begin(), kBeginnings.end(), [&property](std::string_view beginning) {
                               return installer::sameName(property.key.substr(0, beginning.size()), beginning);
                           });
    return isGeneral ? SettingGroup::kGeneral : SettingGroup::kAdvanced;
}

std::vector<DriverProperty> commonProperties() {
    return {{"Server", "", PropertyKind::kText, {}},
            {"Port", "", PropertyKind::kText, {}},
            {"Database", "", PropertyKind::kText, {}},
            {kUserKey, "", PropertyKind::kText, {}},
            {kPasswordKey, "", PropertyKind::kPassword, {}}};
}

#include "setup/config_dsn.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "components/component.h"
#include "installer/configuration.h"
#include "installer/file_dsn.h"
#include "setup/driver_properties.h"
#include "setup/file_dsn_store.h"
#include "setup/setup_form.h"
#include "setup/setup_texts.h"
#include "setup/user_dsn_store.h"

namespace {

SetupFailure failure(unsigned int code, SetupMessage::Number text, const std::string& subject = {}) {
    return {code, setupText(text, subject), {}};
}

// Whether every item of the list is "key=value". Null is the empty list.
bool isAttributeList(const char* list) {
    const std::vector<std::string> items = installer::attributeItems(list);
    return std::all_of(items.begin(), items.end(), [](const std::string& item) {
        const std::size_t equals = item.find('=');
        return equals != 0 && equals != std::string::npos;
    });
}

// The attributes that are settings.
Settings settingsOf(const Settings& attributes) {
    Settings result;
    for (const installer::Attribute& attribute : attributes) {
        if (!isNamingKey(attribute.key)) {
            setValue(result, attribute.key, attribute.value);
        }
    }
    return result;
}

struct Request {
    Widget parent = nullptr;
    std::string driver;
    bool isFile = false;
    std::string name;  // The path of a file data source.
    Settings attributes;
};

// A data source that is to be configured, as the file has it.
struct Stored {
    std::string name;     // Empty when a new one is to be added.
    Settings settings{};  // "Driver" included.
};

// Passwords that came with a connection string are not to end up in a file that many may read, unless they are there
// already or the person asks for it, which takes a row of the form.
Settings withoutUnaskedPasswords(Settings attributes, const Settings& stored, const std::vector<DriverProperty>& rows) {
    std::erase_if(attributes, [&](const installer::Attribute& attribute) {
        const bool hasRow = std::any_of(rows.begin(), rows.end(), [&attribute](const DriverProperty& property) {
            return installer::sameName(property.key, attribute.key);
        });
        return isPasswordKey(attribute.key) && !hasRow && findValue(stored, attribute.key) == nullptr;
    });
    return attributes;
}

// What the form shows and proposes: for a new data source what the driver proposes, else what is stored, and over both
// what the caller gave.
SetupFormContent formContent(const Request& request, const Stored& stored, const std::string& library) {
    SetupFormContent content;
    content.driver = request.driver;
    content.library = library;
    content.isFile = request.isFile;
    content.storedName = stored.name;
    content.stored = stored.settings;
    content.name = request.name;
    if (std::optional<std::vector<DriverProperty>> described = askDriver(library)) {
        content.rows.properties = *std::move(described);
    } else {
        content.rows.properties = commonProperties();
        content.rows.hasFurtherSettings = true;
    }

    content.rows.stored = settingsOf(stored.settings);
    content.rows.shown = content.rows.stored;
    if (stored.name.empty()) {
        for (const DriverProperty& property : content.rows.properties) {
            if (!property.defaultValue.empty() && property.kind != PropertyKind::kFixed) {
                setValue(content.pending, property.key, property.defaultValue);
            }
        }
    }
    const bool canAskForAll = !request.isFile || content.rows.hasFurtherSettings;
    for (const installer::Attribute& attribute :
         canAskForAll ? request.attributes
                      : withoutUnaskedPasswords(request.attributes, content.rows.stored, content.rows.properties)) {
        if (stored.name.empty() || valueOf(content.rows.stored, attribute.key) != attribute.value) {
            setValue(content.pending, attribute.key, attribute.value);
        }
    }
    for (const installer::Attribute& attribute : content.pending) {
        setValue(content.rows.shown, attribute.key, attribute.value);
    }
    return content;
}

// Stores the data source, asking the user when there is a window to do it.
std::optional<SetupFailure> setUp(const Request& request, const Stored& stored) {
    const std::string library = driverLibrary(request.driver);
    if (library.empty()) {
        return failure(ODBC_ERROR_INVALID_NAME, SetupMessage::kUnknownDriver, request.driver);
    }
    if (request.parent != nullptr) {
        return runSetupForm(request.parent, formContent(request, stored, library));
    }
    DataSourceChange change{stored.name, stored.settings, request.name, request.driver, request.attributes};
    if (request.isFile) {
        change.values = withoutUnaskedPasswords(request.attributes, stored.settings, {});
        return saveFileDataSource(change);
    }
    // Adding a name that exists replaces the data source: nobody can be asked, and that is what ODBC tells callers to
    // expect of ConfigDSN without a window.
    return saveDataSource(change);
}

std::optional<SetupFailure> carryOutForFile(WORD code, const Request& request) {
    if (code != ODBC_ADD_DSN && code != ODBC_CONFIG_DSN) {
        return failure(ODBC_ERROR_INVALID_REQUEST_TYPE, SetupMessage::kUnknownRequest, std::to_string(code));
    }
    if (std::optional<SetupFailure> wrongName = checkFileName(request.name)) {
        return wrongName;
    }
    if (code == ODBC_CONFIG_DSN && !fileExists(request.name)) {
        return failure(ODBC_ERROR_INVALID_DSN, SetupMessage::kNoSuchFile, request.name);
    }
    return code == ODBC_ADD_DSN ? setUp(request, {}) : setUp(request, {request.name, readFileDataSource(request.name)});
}

std::optional<SetupFailure> carryOut(WORD code, const Request& request) {
    if (request.isFile) {
        return carryOutForFile(code, request);
    }
    if (code == ODBC_ADD_DSN) {
        return setUp(request, {});
    }
    if (code != ODBC_CONFIG_DSN && code != ODBC_REMOVE_DSN) {
        return failure(ODBC_ERROR_INVALID_REQUEST_TYPE, SetupMessage::kUnknownRequest, std::to_string(code));
    }
    Stored stored{request.name, readDataSource(request.name)};
    if (stored.settings.empty() && !isListed(request.name)) {
        return failure(ODBC_ERROR_INVALID_DSN, SetupMessage::kNoSuchDataSource, request.name);
    }
    return code == ODBC_CONFIG_DSN ? setUp(request, stored) : deleteDataSource(request.name);
}

// `fileName` is null for a user data source.
std::optional<SetupFailure> configure(HWND parent, WORD code, const char* driver, const char* attributes,
                                      const char* fileName) {
    try {
        const SetupCatalogs catalogs;
        const installer::WritableConfiguration configuration;
        if (!isAttributeList(attributes)) {
            return failure(ODBC_ERROR_INVALID_KEYWORD_VALUE, SetupMessage::kBadAttributes);
        }
        const Settings given = installer::parseAttributeList(attributes);
        return carryOut(code, {static_cast<Widget>(parent), driver != nullptr ? driver : "", fileName != nullptr,
                               fileName != nullptr ? installer::withFileDsnExtension(fileName)
                                                   : installer::trimmed(valueOf(given, kNameKey)),
                               settingsOf(given)});
    } catch (const std::exception&) {
        // Nothing here throws but for want of memory.
        return SetupFailure{ODBC_ERROR_OUT_OF_MEM, "Out of memory", {}};
    }
}

BOOL outcome(const std::optional<SetupFailure>& problem) {
    if (!problem) {
        return TRUE;
    }
    // Last of all: everything else that is asked of the installer library empties its list of errors.
    installer::postError(problem->code, problem->text);
    return FALSE;
}

}  // namespace

std::string componentVersion() {
    return kProductVersion;
}

BOOL ConfigDSN(HWND parent, WORD request, LPCSTR driver, LPCSTR attributes) {
    return outcome(configure(parent, request, driver, attributes, nullptr));
}

BOOL ConfigFileDSN(HWND parent, WORD request, LPCSTR driver, LPCSTR attributes, LPCSTR fileName) {
    return outcome(configure(parent, request, driver, attributes, fileName != nullptr ? fileName : ""));
}

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
#include "installer/drivers.h"
#include "installer/file_dsn.h"
#include "setup/driver_properties.h"
#include "setup/file_dsn_store.h"
#include "setup/known_drivers.h"
#include "setup/setup_form.h"
#include "setup/setup_texts.h"
#include "setup/user_dsn_store.h"

namespace {

SetupFailure failure(unsigned int code, SetupMessage::Number text, const std::string& subject = {}) {
    return {code, setupText(text, subject), {}};
}

// What a caller gave. Blanks around keys and values do not count: no file keeps them.
struct GivenAttributes {
    std::string name;
    Settings settings;
    std::vector<std::string>
        unstorable;  // What no file can keep: without the value where there is one, which may be a password.
    std::optional<SetupFailure> problem{};  // What is wrong with the first of these.
};

GivenAttributes parse(const char* list) {
    GivenAttributes given;
    SettingIndex index;
    const auto leaveOut = [&given](const std::string& item, const SetupFailure& problem) {
        given.unstorable.push_back(item);
        given.problem = given.problem ? given.problem : problem;
    };
    for (const std::string& item : installer::attributeItems(list)) {
        const std::size_t equals = item.find('=');
        if (equals == std::string::npos) {
            leaveOut(item, failure(ODBC_ERROR_INVALID_KEYWORD_VALUE, SetupMessage::kBadAttributes));
            continue;
        }
        const installer::Attribute attribute{installer::trimmed(std::string_view(item).substr(0, equals)),
                                             installer::trimmed(std::string_view(item).substr(equals + 1))};
        if (isNamingKey(attribute.key)) {
            if (installer::sameName(attribute.key, kNameKey) && given.name.empty()) {
                given.name = attribute.value;
            }
        } else if (const std::optional<SetupFailure> problem = checkSetting(attribute)) {
            leaveOut(item.substr(0, equals + 1), *problem);
        } else {
            setValue(given.settings, index, attribute.key, attribute.value);
        }
    }
    return given;
}

// Those of the attributes that are settings.
Settings settingsOf(const Settings& attributes) {
    Settings result;
    SettingIndex index;
    for (const installer::Attribute& attribute : attributes) {
        if (!isNamingKey(attribute.key)) {
            setValue(result, index, attribute.key, attribute.value);
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
    std::vector<std::string> leftOut;  // What was given and can't be stored.
};

// A data source that is to be configured, as the file has it.
struct Stored {
    std::string name;     // Empty when a new one is to be added.
    Settings settings{};  // "Driver" included.
};

// Passwords that came with a connection string are not to end up in a file that many may read, unless they are there
// already or the person asks for it, which takes the form.
Settings withoutUnaskedPasswords(Settings attributes, const Settings& stored) {
    std::erase_if(attributes, [&stored](const installer::Attribute& attribute) {
        return installer::isPasswordKey(attribute.key) && findValue(stored, attribute.key) == nullptr;
    });
    return attributes;
}

// What the form shows: what is stored, and over it what the caller gave. What the driver describes as its defaults is
// told and not stored: the driver knows better, and may change its mind.
SetupFormContent formContent(const Request& request, const Stored& stored, const std::string& library) {
    SetupFormContent content;
    content.driver = request.driver;
    content.library = library;
    content.isFile = request.isFile;
    content.storedName = stored.name;
    content.stored = stored.settings;
    content.name = request.name;
    content.leftOut = request.leftOut;
    std::optional<std::vector<DriverProperty>> described = knownProperties(library, request.isFile);
    if (described) {
        // Those that most people need; the driver knows more.
        content.rows.hasFurtherSettings = true;
    } else {
        described = askDriver(library);
    }
    if (described) {
        content.rows.properties = *std::move(described);
        explain(library, content.rows.properties);
    } else {
        content.rows.properties = commonProperties();
        content.rows.hasFurtherSettings = true;
    }
    for (DriverProperty& property : content.rows.properties) {
        property.isPercentEncoded = property.kind == PropertyKind::kPassword && hasEncodedPasswords(library);
    }

    content.rows.stored = settingsOf(stored.settings);
    content.rows.shown = content.rows.stored;
    const SettingIndex inFile(content.rows.stored);
    SettingIndex pending;
    for (const installer::Attribute& attribute : request.attributes) {
        const std::optional<std::size_t> place = inFile.find(attribute.key);
        const std::string before = place ? content.rows.stored[*place].value : std::string();
        if (stored.name.empty() || before != attribute.value) {
            setValue(content.pending, pending, attribute.key, attribute.value);
        }
    }
    SettingIndex shown = inFile;
    for (const installer::Attribute& attribute : content.pending) {
        setValue(content.rows.shown, shown, attribute.key, attribute.value);
    }
    return content;
}

// Stores the data source, asking the user when there is a window to do it.
std::optional<SetupFailure> setUp(const Request& request, const Stored& stored) {
    const std::string library = installer::driverLibrary(request.driver);
    if (library.empty()) {
        return failure(ODBC_ERROR_INVALID_NAME, SetupMessage::kUnknownDriver, request.driver);
    }
    if (request.parent != nullptr) {
        return runSetupForm(request.parent, formContent(request, stored, library));
    }
    DataSourceChange change{stored.name, stored.settings, request.name, request.driver, request.attributes};
    if (request.isFile) {
        change.values = withoutUnaskedPasswords(request.attributes, stored.settings);
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
        const GivenAttributes given = parse(attributes);
        // The dialog names what it leaves out; without one nobody would learn of it.
        if (parent == nullptr && given.problem) {
            return given.problem;
        }
        return carryOut(code, {static_cast<Widget>(parent), driver != nullptr ? driver : "", fileName != nullptr,
                               fileName != nullptr ? installer::withFileDsnExtension(fileName) : given.name,
                               given.settings, given.unstorable});
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

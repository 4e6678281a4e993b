// The product's PostgreSQL driver: a thin library that depends on Debian's (psqlodbcw.so), adds the identification
// functions, and describes the driver's settings, which that driver can't do itself. What they are for our setup
// library says, in the person's language (setup/known_drivers.cpp).
#include <odbcinstext.h>

#include <cstdlib>
#include <cstring>
#include <iterator>

#include "components/component.h"

namespace {

constexpr const char* const kSwitch[] = {"0", "1", nullptr};
constexpr const char* const kSslModes[] = {"disable",   "allow",       "prefer", "require",
                                           "verify-ca", "verify-full", nullptr};
constexpr const char* const kUnknownSizes[] = {"0", "1", "2", nullptr};

struct Setting {
    const char* name;
    const char* value;
    int promptType;
    const char* const* choices;
};

// The keywords and defaults of psqlodbc's documentation ("psqlODBC Configuration Options"), the connection first.
constexpr Setting kSettings[] = {
    {"Servername", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"Port", "5432", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"Database", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"Username", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"Password", "", ODBCINST_PROMPTTYPE_TEXTEDIT_PASSWORD, nullptr},
    {"SSLmode", "prefer", ODBCINST_PROMPTTYPE_LISTBOX, kSslModes},
    {"ReadOnly", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"ShowSystemTables", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"ShowOidColumn", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"FakeOidIndex", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"RowVersioning", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"UpdatableCursors", "1", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"UseDeclareFetch", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"Fetch", "100", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"UseServerSidePrepare", "1", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"Protocol", "7.4-1", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"UnknownSizes", "0", ODBCINST_PROMPTTYPE_LISTBOX, kUnknownSizes},
    {"MaxVarcharSize", "255", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"MaxLongVarcharSize", "8190", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"TextAsLongVarchar", "1", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"UnknownsAsLongVarchar", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"BoolsAsChar", "1", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"TrueIsMinus1", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"ByteaAsLongVarBinary", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"LFConversion", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"LowerCaseIdentifier", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"ExtraSysTablePrefixes", "dd_;", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"ConnSettings", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"KeepaliveTime", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"KeepaliveInterval", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"pqopt", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr},
    {"Debug", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
    {"CommLog", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch},
};

// Copies the choices into one block that the installer library frees with free(). The texts stay ours: it frees the
// array alone.
char** copyChoices(const char* const* choices) {
    std::size_t count = 1;
    while (choices[count - 1] != nullptr) {
        ++count;
    }
    auto** copy = static_cast<char**>(std::malloc(count * sizeof(char*)));
    if (copy != nullptr) {
        std::memcpy(copy, choices, count * sizeof(char*));
    }
    return copy;
}

// Appends a property after `last`; null when there is no memory for it.
HODBCINSTPROPERTY append(HODBCINSTPROPERTY last, const Setting& setting) {
    auto* property = static_cast<HODBCINSTPROPERTY>(std::calloc(1, sizeof(ODBCINSTPROPERTY)));
    if (property == nullptr) {
        return nullptr;
    }
    std::strcpy(property->szName, setting.name);
    std::strcpy(property->szValue, setting.value);
    property->nPromptType = setting.promptType;
    if (setting.choices != nullptr) {
        property->aPromptData = copyChoices(setting.choices);
    }
    last->pNext = property;
    return property;
}

}  // namespace

std::string componentVersion() {
    return kProductVersion;
}

// Appends the driver's settings to the list that ends with `lastProperty` (odbcinstext.h). Returns 1, or 0 when memory
// ran out; the list is whole as far as it goes.
extern "C" __attribute__((visibility("default"))) int ODBCINSTGetProperties(HODBCINSTPROPERTY lastProperty) {
    for (const Setting& setting : kSettings) {
        lastProperty = append(lastProperty, setting);
        if (lastProperty == nullptr) {
            return 0;
        }
    }
    return 1;
}

// The product's PostgreSQL driver: a thin library that depends on Debian's (psqlodbcw.so), adds the identification
// functions, and describes the driver's settings, which that driver can't do itself.
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
    const char* help;
};

// The keywords and defaults of psqlodbc's documentation ("psqlODBC Configuration Options"), the connection first.
constexpr Setting kSettings[] = {
    {"Servername", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr,
     "Name or address of the database server; without one, a socket of this machine."},
    {"Port", "5432", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr, "Port that the server listens on."},
    {"Database", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr, "Database to connect to."},
    {"Username", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr, "Database user."},
    {"Password", "", ODBCINST_PROMPTTYPE_TEXTEDIT_PASSWORD, nullptr, "Password of the database user."},
    {"SSLmode", "prefer", ODBCINST_PROMPTTYPE_LISTBOX, kSslModes, "Whether the connection is encrypted and checked."},
    {"ReadOnly", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 refuses statements that change data."},
    {"ShowSystemTables", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 lists the server's own tables too."},
    {"ShowOidColumn", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 lists the row identifier as a column."},
    {"FakeOidIndex", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 pretends that there is an index on it."},
    {"RowVersioning", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 lets programs notice concurrent changes."},
    {"UpdatableCursors", "1", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 lets programs change rows through a cursor."},
    {"UseDeclareFetch", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 reads large results in pieces."},
    {"Fetch", "100", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr, "Rows in a piece, when results are read in pieces."},
    {"UseServerSidePrepare", "1", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 prepares statements on the server."},
    {"Protocol", "7.4-1", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr,
     "Last digit, rolled back on error: 0 nothing, 1 transaction, 2 statement."},
    {"UnknownSizes", "0", ODBCINST_PROMPTTYPE_LISTBOX, kUnknownSizes,
     "Size told of columns without one: 0 maximum, 1 unknown, 2 longest."},
    {"MaxVarcharSize", "255", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr, "Longest text told as varchar."},
    {"MaxLongVarcharSize", "8190", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr, "Longest text told as longvarchar."},
    {"TextAsLongVarchar", "1", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 tells text columns as longvarchar."},
    {"UnknownsAsLongVarchar", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 tells unknown types as longvarchar."},
    {"BoolsAsChar", "1", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 tells truth values as text."},
    {"TrueIsMinus1", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 shows true as -1."},
    {"ByteaAsLongVarBinary", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 tells bytea columns as longvarbinary."},
    {"LFConversion", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 converts line ends to CR LF and back."},
    {"LowerCaseIdentifier", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 lowers the case of identifiers."},
    {"ExtraSysTablePrefixes", "dd_;", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr, "Further prefixes of system tables."},
    {"ConnSettings", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr, "SQL sent to the server after connecting."},
    {"KeepaliveTime", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr, "Idle seconds before the connection is probed."},
    {"KeepaliveInterval", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr, "Seconds between probes."},
    {"pqopt", "", ODBCINST_PROMPTTYPE_TEXTEDIT, nullptr, "Further connection parameters of libpq."},
    {"Debug", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 writes a log of the driver."},
    {"CommLog", "0", ODBCINST_PROMPTTYPE_LISTBOX, kSwitch, "1 writes a log of what the server is sent."},
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
    property->pszHelp = strdup(setting.help);
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

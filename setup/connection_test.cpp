#include "setup/connection_test.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>

namespace {

constexpr std::intptr_t kLoginTimeoutSeconds = 15;
// The bytes that a diagnostic record seldom exceeds.
constexpr std::size_t kUsualRecord = 256;

// An ODBC handle of one type, freed with this object.
template <SQLSMALLINT Type>
class Handle {
public:
    explicit Handle(SQLHANDLE parent) : isMade_(SQL_SUCCEEDED(SQLAllocHandle(Type, parent, &handle_))) {}
    ~Handle() {
        if (isMade_) {
            SQLFreeHandle(Type, handle_);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    explicit operator bool() const noexcept { return isMade_; }
    SQLHANDLE get() const noexcept { return handle_; }

private:
    SQLHANDLE handle_ = SQL_NULL_HANDLE;
    bool isMade_;
};

// The text of one record, asked for again when it was longer than there was room for; empty when there is no such
// record.
std::string diagnosticRecord(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT record) {
    std::array<SQLCHAR, SQL_SQLSTATE_SIZE + 1> state{};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    std::vector<SQLCHAR> message(kUsualRecord);
    const auto ask = [&] {
        return SQL_SUCCEEDED(SQLGetDiagRec(type, handle, record, state.data(), &native, message.data(),
                                           static_cast<SQLSMALLINT>(message.size()), &length));
    };
    if (!ask()) {
        return {};
    }
    if (static_cast<std::size_t>(length) >= message.size()) {
        message.resize(std::min<std::size_t>(static_cast<std::size_t>(length) + 1, SHRT_MAX));
        ask();
    }
    return std::string(reinterpret_cast<const char*>(state.data())) + ": " +
           oneLine(reinterpret_cast<const char*>(message.data()));
}

std::vector<std::string> diagnosticsOf(SQLSMALLINT type, SQLHANDLE handle) {
    std::vector<std::string> records;
    for (SQLSMALLINT number = 1; number < SHRT_MAX; ++number) {
        const std::string record = diagnosticRecord(type, handle, number);
        if (record.empty()) {
            break;
        }
        records.push_back(record);
    }
    return records;
}

std::string braced(const std::string& value) {
    std::string result = "{";
    for (const char byte : value) {
        result += byte;
        if (byte == '}') {
            result += byte;
        }
    }
    return result + "}";
}

// In braces only where the string could not be read otherwise. Other punctuation is harmless inside of a value, and
// there are drivers, that of SQLite is one, which take braces for a part of it.
std::string quoted(const std::string& value) {
    const bool isPlain =
        value.find(';') == std::string::npos && value.front() != '{' && value == installer::trimmed(value);
    return isPlain ? value : braced(value);
}

}  // namespace

std::string connectionString(const std::string& driver, const Settings& settings) {
    std::string text = "DRIVER=" + braced(driver) + ";";
    for (const installer::Attribute& setting : settings) {
        if (!setting.value.empty() && !isNamingKey(setting.key) && !installer::sameName(setting.key, kDescriptionKey)) {
            text += setting.key + "=" + quoted(setting.value) + ";";
        }
    }
    return text;
}

ConnectionOutcome testConnection(std::string connectionString) {
    const Handle<SQL_HANDLE_ENV> environment(SQL_NULL_HANDLE);
    if (!environment) {
        return {};
    }
    SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    const Handle<SQL_HANDLE_DBC> connection(environment.get());
    if (!connection) {
        return {false, diagnosticsOf(SQL_HANDLE_ENV, environment.get())};
    }
    // A driver that knows no timeout refuses it, and is tried all the same.
    SQLSetConnectAttr(connection.get(), SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(kLoginTimeoutSeconds),
                      SQL_IS_UINTEGER);
    std::array<SQLCHAR, 1024> completed{};
    SQLSMALLINT length = 0;
    const SQLRETURN result =
        SQLDriverConnect(connection.get(), nullptr, reinterpret_cast<SQLCHAR*>(connectionString.data()), SQL_NTS,
                         completed.data(), static_cast<SQLSMALLINT>(completed.size()), &length, SQL_DRIVER_NOPROMPT);
    explicit_bzero(connectionString.data(), connectionString.size());
    explicit_bzero(completed.data(), completed.size());
    ConnectionOutcome outcome{SQL_SUCCEEDED(result), {}};
    if (result != SQL_SUCCESS) {
        outcome.diagnostics = diagnosticsOf(SQL_HANDLE_DBC, connection.get());
    }
    if (outcome.connected) {
        SQLDisconnect(connection.get());
    }
    return outcome;
}

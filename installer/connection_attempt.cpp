#include "installer/connection_attempt.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <new>

#include "installer/configuration.h"
#include "installer/private_file.h"

namespace {

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

// The text of one record, asked for again when it was longer than there was room for.
std::optional<std::string> diagnosticRecord(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT record) {
    std::array<SQLCHAR, SQL_SQLSTATE_SIZE + 1> state{};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    std::vector<SQLCHAR> message(kUsualRecord);
    const auto ask = [&] {
        return SQL_SUCCEEDED(SQLGetDiagRec(type, handle, record, state.data(), &native, message.data(),
                                           static_cast<SQLSMALLINT>(message.size()), &length));
    };
    if (!ask()) {
        return std::nullopt;
    }
    if (static_cast<std::size_t>(length) >= message.size()) {
        message.resize(std::min<std::size_t>(static_cast<std::size_t>(length) + 1, SHRT_MAX));
        ask();
    }
    // One driver has no states.
    const std::string heading = reinterpret_cast<const char*>(state.data());
    return (heading.empty() ? "" : heading + ": ") + installer::oneLine(reinterpret_cast<const char*>(message.data()));
}

std::vector<std::string> diagnosticsOf(SQLSMALLINT type, SQLHANDLE handle) {
    std::vector<std::string> records;
    for (SQLSMALLINT number = 1; number < SHRT_MAX; ++number) {
        const std::optional<std::string> record = diagnosticRecord(type, handle, number);
        if (!record) {
            break;
        }
        if (!record->empty()) {
            records.push_back(*record);
        }
    }
    return records;
}

// What the server calls itself.
std::string serverOf(SQLHDBC connection) {
    std::string server;
    for (const SQLUSMALLINT type : {SQLUSMALLINT{SQL_DBMS_NAME}, SQLUSMALLINT{SQL_DBMS_VER}}) {
        std::array<SQLCHAR, kUsualRecord> text{};
        SQLSMALLINT length = 0;
        // The last byte stays, whatever the driver makes of the size.
        if (SQL_SUCCEEDED(SQLGetInfo(connection, type, text.data(), text.size() - 1, &length)) && text[0] != '\0') {
            server += (server.empty() ? "" : " ") + installer::oneLine(reinterpret_cast<const char*>(text.data()));
        }
    }
    return server;
}

// Connects and disconnects. Returns when the driver does, which is not asked to give up: the person decides that.
ConnectionOutcome connect(std::string connectionString) {
    const Handle<SQL_HANDLE_ENV> environment(SQL_NULL_HANDLE);
    if (!environment) {
        return {};
    }
    SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    const Handle<SQL_HANDLE_DBC> connection(environment.get());
    if (!connection) {
        return {false, diagnosticsOf(SQL_HANDLE_ENV, environment.get())};
    }
    std::array<SQLCHAR, 1024> completed{};
    SQLSMALLINT length = 0;
    const SQLRETURN result =
        SQLDriverConnect(connection.get(), nullptr, reinterpret_cast<SQLCHAR*>(connectionString.data()), SQL_NTS,
                         completed.data(), static_cast<SQLSMALLINT>(completed.size()), &length, SQL_DRIVER_NOPROMPT);
    ConnectionOutcome outcome{SQL_SUCCEEDED(result), {}};
    if (result != SQL_SUCCESS) {
        outcome.diagnostics = diagnosticsOf(SQL_HANDLE_DBC, connection.get());
    }
    if (outcome.connected) {
        outcome.server = serverOf(connection.get());
        SQLDisconnect(connection.get());
    }
    return outcome;
}

// Lets the installer library read this file as the user's, in this process alone.
void useConfiguration(const installer::PrivateFile& file) {
    setenv("ODBCINI", file.path().c_str(), 1);
    // It is that of a user, whichever a caller of ours asked for.
    installer::useUserConfiguration();
}

// The outcome as it passes from one process to the other: whether it is connected, the server, the records, each with a
// terminator.
std::string textOf(const ConnectionOutcome& outcome) {
    std::string text = outcome.connected ? "1" : "0";
    text += outcome.server + '\0';
    for (const std::string& record : outcome.diagnostics) {
        text += record + '\0';
    }
    return text;
}

ConnectionOutcome outcomeOf(const std::string& text) {
    ConnectionOutcome outcome;
    outcome.connected = text.front() == '1';
    outcome.server = text.c_str() + 1;
    outcome.diagnostics = installer::attributeItems(text.c_str() + 1 + outcome.server.size() + 1);
    return outcome;
}

}  // namespace

ConnectionAttempt::ConnectionAttempt(const ConnectionTest& test)
    : process_([&test] {
          const installer::PrivateFile configuration;
          if (test.configuration) {
              if (!configuration.write(*test.configuration)) {
                  throw std::bad_alloc();
              }
              useConfiguration(configuration);
          }
          return textOf(connect(test.connectionString));
      }) {}

std::optional<ConnectionOutcome> ConnectionAttempt::outcome() {
    return waitForOutcome(std::chrono::milliseconds(0));
}

std::optional<ConnectionOutcome> ConnectionAttempt::waitForOutcome(std::chrono::milliseconds patience) {
    const std::optional<DriverProcess::End> end = process_.waitForEnd(patience);
    if (!end) {
        return std::nullopt;
    }
    ConnectionOutcome outcome = end->answer ? outcomeOf(*end->answer) : ConnectionOutcome();
    outcome.printed = end->printed;
    outcome.crash = end->reason;
    return outcome;
}

std::string bracedValue(const std::string& value) {
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
std::string connectionValue(const std::string& value) {
    const bool isPlain =
        value.find(';') == std::string::npos && value.front() != '{' && value == installer::trimmed(value);
    return isPlain ? value : bracedValue(value);
}

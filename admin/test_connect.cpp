#include "admin/test_connect.h"

#include <sqlext.h>

#include <cstdlib>
#include <cstring>

#include "kvlib/message_box.h"

namespace {

// As Windows numbers them: buttons OK and Cancel, exclamation mark.
constexpr std::uint32_t kReportStyle = 0x31;

SQLCHAR* sqlText(char* text) {
    return reinterpret_cast<SQLCHAR*>(text);
}

}  // namespace

TestConnect::TestConnect(DSNInfoStruct* info) : info_(info), window_(info->window) {}

TestConnect::TestConnect(void* window, char* connectionString) : window_(window), connectionString_(connectionString) {}

TestConnect::~TestConnect() {
    reserved_ = 0;
    for (char* text : ownedTexts_) {
        std::free(text);
    }
}

bool TestConnect::isTooLong(const char* connectionString) {
    constexpr std::size_t kLongest = 2047;
    return strcasestr(connectionString, "FILEDSN=") != nullptr && std::strlen(connectionString) > kLongest;
}

int TestConnect::testConnect() {
    if (testInit() == 0) {
        return 0;
    }
    // The driver manager reads it, also when the driver has left it alone, and writes the path of FILEDSN= before the
    // driver's string without looking at the size that it was told.
    constexpr SQLSMALLINT kAnnounced = 1024;
    SQLCHAR completed[kAnnounced + 4096] = {};
    char nothing[] = "";
    char* text = connectionString_ != nullptr ? connectionString_ : nothing;
    const SQLRETURN result =
        SQLDriverConnect(connection_, window_, sqlText(text), static_cast<SQLSMALLINT>(std::strlen(text)), completed,
                         kAnnounced, nullptr, SQL_DRIVER_COMPLETE);
    if (result == SQL_ERROR) {
        testError();
        testTerm();
        return 0;
    }
    if (!SQL_SUCCEEDED(result)) {
        flags_ |= kUnanswered;
        testTerm();
        return 0;
    }
    if (SQLDisconnect(connection_) == SQL_ERROR) {
        testError();
        testTerm();
        return 0;
    }
    testTerm();
    return 1;
}

int TestConnect::testInit() {
    if (SQLAllocHandle(SQL_HANDLE_ENV, nullptr, &environment_) == SQL_ERROR ||
        SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3),
                      SQL_IS_INTEGER) == SQL_ERROR ||
        SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_) == SQL_ERROR) {
        testError();
        return 0;
    }
    return 1;
}

int TestConnect::testTerm() {
    // The handles keep their values, so that the diagnostics of a handle that can't be freed can be asked for.
    if (SQLFreeHandle(SQL_HANDLE_DBC, connection_) == SQL_ERROR ||
        SQLFreeHandle(SQL_HANDLE_ENV, environment_) == SQL_ERROR) {
        testError();
        return 0;
    }
    return 1;
}

void TestConnect::testError() {
    const bool isConnection = connection_ != nullptr;
    const SQLSMALLINT type = isConnection ? SQL_HANDLE_DBC : SQL_HANDLE_ENV;
    SQLHANDLE handle = isConnection ? connection_ : environment_;
    SQLCHAR state[6];
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    for (SQLSMALLINT record = 1; SQL_SUCCEEDED(SQLGetDiagRec(type, handle, record, state, &native, sqlText(message_),
                                                             static_cast<SQLSMALLINT>(sizeof message_), &length));
         ++record) {
        MessageBox(window_, message_, "Test Connect Error", kReportStyle);
    }
}

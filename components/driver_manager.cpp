// Identifies the ODBC driver manager by what it tells of itself (SQLGetInfo, SQL_DM_VER).
#include <sql.h>
#include <sqlext.h>

#include "components/component.h"

std::string componentVersion() {
    SQLHENV environment = SQL_NULL_HENV;
    SQLHDBC connection = SQL_NULL_HDBC;
    char version[64] = "";
    if (SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment))) {
        SQLSetEnvAttr(environment, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), SQL_IS_INTEGER);
        if (SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_DBC, environment, &connection))) {
            // The manager answers this without a connection.
            SQLGetInfo(connection, SQL_DM_VER, version, sizeof version, nullptr);
            SQLFreeHandle(SQL_HANDLE_DBC, connection);
        }
        SQLFreeHandle(SQL_HANDLE_ENV, environment);
    }
    return version;
}

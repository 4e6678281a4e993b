#include "components/odbc_version.h"

#include <dlfcn.h>
#include <link.h>
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <array>
#include <climits>
#include <cstring>
#include <cuchar>

namespace {

// A function that the library defines itself: on a library that was linked with a driver manager the look-up reaches
// that one's functions as well.
template <typename Function>
Function* ownFunction(void* library, const char* name) {
    void* function = dlsym(library, name);
    const link_map* map = nullptr;
    Dl_info place{};
    const bool isOwn = function != nullptr && dlinfo(library, RTLD_DI_LINKMAP, &map) == 0 &&
                       dladdr(function, &place) != 0 && std::strcmp(place.dli_fname, map->l_name) == 0;
    return isOwn ? reinterpret_cast<Function*>(function) : nullptr;
}

// The version of the driver; some tell only that of what they access. A driver manager tells its own.
constexpr std::array<SQLUSMALLINT, 3> kQuestions{SQL_DRIVER_VER, SQL_DBMS_VER, SQL_DM_VER};
constexpr SQLSMALLINT kMostBytes = 512;

std::string askNarrow(decltype(SQLGetInfo)* getInfo, SQLHDBC connection, SQLUSMALLINT question) {
    std::array<char, kMostBytes + 1> text{};
    const SQLRETURN result = getInfo(connection, question, text.data(), kMostBytes, nullptr);
    return SQL_SUCCEEDED(result) ? text.data() : "";
}

std::string askWide(decltype(SQLGetInfoW)* getInfo, SQLHDBC connection, SQLUSMALLINT question) {
    std::array<char16_t, kMostBytes / sizeof(char16_t) + 1> text{};
    const SQLRETURN result = getInfo(connection, question, text.data(), kMostBytes, nullptr);
    if (!SQL_SUCCEEDED(result)) {
        return "";
    }
    std::string version;
    std::mbstate_t state{};
    for (const char16_t* unit = text.data(); *unit != u'\0'; ++unit) {
        std::array<char, MB_LEN_MAX> bytes{};
        const std::size_t count = std::c16rtomb(bytes.data(), *unit, &state);
        version.append(bytes.data(), count == static_cast<std::size_t>(-1) ? 0 : count);
    }
    return version;
}

}  // namespace

std::optional<std::string> odbcVersion(void* library) {
    auto* allocHandle = ownFunction<decltype(SQLAllocHandle)>(library, "SQLAllocHandle");
    auto* setEnvAttr = ownFunction<decltype(SQLSetEnvAttr)>(library, "SQLSetEnvAttr");
    auto* getInfo = ownFunction<decltype(SQLGetInfo)>(library, "SQLGetInfo");
    // Only where it must be: the wide function of one driver in use crashes without a connection.
    auto* getInfoWide = ownFunction<decltype(SQLGetInfoW)>(library, "SQLGetInfoW");
    if (allocHandle == nullptr || setEnvAttr == nullptr || (getInfo == nullptr && getInfoWide == nullptr)) {
        return std::nullopt;
    }
    SQLHENV environment = SQL_NULL_HENV;
    SQLHDBC connection = SQL_NULL_HDBC;
    if (!SQL_SUCCEEDED(allocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment)) ||
        !SQL_SUCCEEDED(setEnvAttr(environment, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3),
                                  SQL_IS_INTEGER)) ||
        !SQL_SUCCEEDED(allocHandle(SQL_HANDLE_DBC, environment, &connection))) {
        return "";
    }
    for (const SQLUSMALLINT question : kQuestions) {
        std::string version =
            getInfo != nullptr ? askNarrow(getInfo, connection, question) : askWide(getInfoWide, connection, question);
        if (!version.empty()) {
            return version;
        }
    }
    return "";
}

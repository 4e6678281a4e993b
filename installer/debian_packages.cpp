#include "installer/debian_packages.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace installer {

namespace {

struct Package {
    std::string_view library;  // What its name begins with.
    const char* name;
};

constexpr std::array kPackages{Package{"libsqlite3odbc.so", "libsqliteodbc"},
                               Package{"psqlodbc", "odbc-postgresql"},
                               Package{"libmaodbc.so", "odbc-mariadb"},
                               Package{"libmdbodbc.so", "odbc-mdbtools"},
                               Package{"libtdsodbc.so", "tdsodbc"},
                               Package{"libodbcinst.so.2", "libodbcinst2"},
                               Package{"libodbc.so.2", "libodbc2"},
                               Package{"libodbccr.so.2", "libodbccr2"},
                               Package{"libodbcinst.so.1", "libodbcinst2, as libodbcinst.so.2"},
                               Package{"libodbc.so.1", "libodbc2, as libodbc.so.2"},
                               Package{"libstdc++.so.6", "libstdc++6"},
                               Package{"libstdc++.so.5", "libstdc++5"},
                               Package{"libcrypt.so.1", "libcrypt1"},
                               Package{"libnsl.so.1", "libnsl2, as libnsl.so.2"},
                               Package{"libldap", "libldap-2.5-0"},
                               Package{"libtinfo.so.5", "libtinfo5"},
                               Package{"libmysqlclient.so.", "libmariadb3, as libmariadb.so.3"},
                               Package{"libxml2.so.2", "libxml2"},
                               Package{"libgcc_s.so.1", "libgcc-s1"},
                               Package{"libssl.so.3", "libssl3"},
                               Package{"libcrypto.so.3", "libssl3"},
                               Package{"libssl.so.1.1", "libssl1.1 (Debian 11)"},
                               Package{"libcrypto.so.1.1", "libssl1.1 (Debian 11)"},
                               Package{"libssl.so.1.0.", "libssl1.0.0 (Debian 8), libssl1.0.2 (Debian 9)"},
                               Package{"libcrypto.so.1.0.", "libssl1.0.0 (Debian 8), libssl1.0.2 (Debian 9)"},
                               Package{"libltdl.so.7", "libltdl7"},
                               Package{"libkrb5.so.3", "libkrb5-3"},
                               Package{"libgssapi_krb5.so.2", "libgssapi-krb5-2"},
                               Package{"libpq.so.5", "libpq5"},
                               Package{"libmariadb.so.3", "libmariadb3"},
                               Package{"libsqlite3.so.0", "libsqlite3-0"},
                               Package{"libct.so.4", "libct4"},
                               Package{"libcurl.so.4", "libcurl4"},
                               Package{"libuuid.so.1", "libuuid1"},
                               Package{"libz.so.1", "zlib1g"},
                               Package{"libaio.so.1", "libaio1"},
                               Package{"libsasl2.so.2", "libsasl2-2"},
                               Package{"libsasl2.so.3", "libsasl2-2, as libsasl2.so.2"},
                               Package{"libreadline.so.", "libreadline8"},
                               Package{"libncurses.so.5", "libncurses5"},
                               Package{"libicuuc.so.", "libicu72"},
                               Package{"libtdsS.so", "tdsodbc"}};

std::string_view baseName(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

}  // namespace

std::string packageOf(const std::string& library) {
    const auto* const found = std::find_if(kPackages.begin(), kPackages.end(), [&library](const Package& package) {
        return baseName(library).starts_with(package.library);
    });
    return found == kPackages.end() ? "" : found->name;
}

std::string driverInsteadOf(const std::string& library) {
    return baseName(library) == "libsqliteodbc.so" ? "SQLite3" : "";
}

}  // namespace installer

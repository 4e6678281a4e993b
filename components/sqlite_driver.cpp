// The product's SQLite driver: a thin library that depends on Debian's and adds the identification functions. Whoever
// looks up an ODBC function on its handle reaches the driver that it depends on.
#include <dlfcn.h>

#include "components/component.h"

std::string componentVersion() {
    std::string version = kProductVersion;
    // SQLite itself was loaded as a dependency of the driver. The default search begins with the program's libraries
    // and goes on with those of this one, as it did for the driver's own calls, so this is the SQLite that the driver
    // uses.
    const auto libraryVersion = reinterpret_cast<const char* (*)()>(dlsym(RTLD_DEFAULT, "sqlite3_libversion"));
    if (libraryVersion != nullptr) {
        version.append(" (SQLite ").append(libraryVersion()).append(")");
    }
    return version;
}

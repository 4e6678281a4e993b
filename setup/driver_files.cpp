#include "setup/driver_files.h"

#include <dlfcn.h>
#include <sql.h>
#include <unistd.h>

namespace {

// The folder of the driver manager that this process uses.
std::string managerFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&SQLAllocHandle), &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    const std::string path = info.dli_fname;
    return path.substr(0, path.rfind('/') + 1);
}

}  // namespace

std::string driverPath(const std::string& library) {
    if (library.find('/') != std::string::npos) {
        return library;
    }
    // libodbc's build sets the module directory, which nobody can ask for: Debian and others have it there.
    const std::string path = managerFolder() + "odbc/" + library;
    return access(path.c_str(), F_OK) == 0 ? path : library;
}

bool isDriverInstalled(const std::string& library) {
    const std::string path = driverPath(library);
    return path.find('/') != std::string::npos ? access(path.c_str(), F_OK) == 0
                                               : access((managerFolder() + library).c_str(), F_OK) == 0;
}

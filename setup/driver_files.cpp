#include "setup/driver_files.h"

#include <dlfcn.h>
#include <sql.h>
#include <unistd.h>

#include <chrono>

#include "setup/driver_process.h"

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
    if (path.find('/') != std::string::npos) {
        return access(path.c_str(), F_OK) == 0;
    }
    // Wherever else the loader looks. What the library does when it is loaded, it does not do here.
    constexpr std::chrono::seconds kPatience(2);
    DriverProcess process([&library] {
        return std::string(dlopen(library.c_str(), RTLD_LAZY | RTLD_LOCAL) == nullptr ? dlerror() : "");
    });
    const std::optional<DriverProcess::End> end = process.waitForEnd(kPatience);
    return !end || !end->answer || !end->answer->starts_with(library + ": cannot open shared object file");
}

// Our setup library under the name of a driver that is registered as its own setup library and has no dialog. The name
// is found before the driver itself when a library is looked for, so it answers for the driver when it is asked for its
// version.
#include <dlfcn.h>
#include <odbcinst.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>

#include "components/odbc_version.h"

namespace {

namespace fs = std::filesystem;

fs::path ownPath() {
    Dl_info place{};
    return dladdr(reinterpret_cast<void*>(&ownPath), &place) != 0 ? place.dli_fname : "";
}

// From the next directory that has it, else from where the loader looks by itself; null when it is not installed.
void* loadDriver() {
    const fs::path own = ownPath();
    const char* list = std::getenv("KVLIB");
    std::istringstream directories(list == nullptr ? "" : list);
    for (std::string directory; std::getline(directories, directory, ':');) {
        const fs::path path = fs::path(directory) / own.filename();
        std::error_code ignored;
        if (!directory.empty() && fs::is_regular_file(path, ignored) && !fs::equivalent(path, own, ignored)) {
            return dlopen(path.c_str(), RTLD_NOW);
        }
    }
    void* driver = dlopen(own.filename().c_str(), RTLD_NOW);
    if (driver == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
    }
    return driver;
}

// What the driver says to one of the identification functions; null when it has none.
const char* ask(void* driver, const char* function) {
    const auto answer = driver == nullptr ? nullptr : reinterpret_cast<const char* (*)()>(dlsym(driver, function));
    return answer == nullptr ? nullptr : answer();
}

const std::string& version() {
    static const std::string text = [] {
        void* driver = loadDriver();
        const char* own = ask(driver, "getFileVersionString");
        if (own != nullptr) {
            return std::string(own);
        }
        return driver == nullptr ? std::string() : odbcVersion(driver).value_or("");
    }();
    return text;
}

template <typename Function>
Function* setupFunction(const char* name) {
    void* library = dlopen((ownPath().parent_path().parent_path() / "vhsetup23.so").c_str(), RTLD_NOW);
    return library == nullptr ? nullptr : reinterpret_cast<Function*>(dlsym(library, name));
}

}  // namespace

extern "C" {
__attribute__((visibility("default"))) const char* getFileVersionString() {
    return version().c_str();
}

__attribute__((visibility("default"))) const char16_t* getFileVersionStringW() {
    static const std::u16string wide(version().begin(), version().end());
    return wide.c_str();
}

__attribute__((visibility("default"))) const char* getCompanyNameString() {
    const char* company = ask(loadDriver(), "getCompanyNameString");
    return company == nullptr ? "" : company;
}

__attribute__((visibility("default"))) BOOL ConfigDSN(HWND parent, WORD request, LPCSTR driver, LPCSTR attributes) {
    auto* configure = setupFunction<decltype(ConfigDSN)>("ConfigDSN");
    return configure != nullptr ? configure(parent, request, driver, attributes) : 0;
}

__attribute__((visibility("default"))) BOOL ConfigFileDSN(HWND parent, WORD request, LPCSTR driver, LPCSTR attributes,
                                                          LPCSTR fileName) {
    auto* configure = setupFunction<decltype(ConfigFileDSN)>("ConfigFileDSN");
    return configure != nullptr ? configure(parent, request, driver, attributes, fileName) : 0;
}
}

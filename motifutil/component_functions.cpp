#include "motifutil/component_functions.h"

#include <dlfcn.h>
#include <link.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr const char* kVersionFunction = "getFileVersionString";
constexpr const char* kCompanyFunction = "getCompanyNameString";

// What a component answers to one of its identification functions; null without the function.
char* ask(void* handle, const char* function) {
    const auto answer = reinterpret_cast<char* (*)()>(dlsym(handle, function));
    return answer == nullptr ? nullptr : answer();
}

}  // namespace

char* getVersion(void* handle) {
    return ask(handle, kVersionFunction);
}

bool hasVersion(void* handle) {
    return dlsym(handle, kVersionFunction) != nullptr;
}

char* getCompany(void* handle) {
    return ask(handle, kCompanyFunction);
}

void endWithoutVersion(void* handle, const char* libraryName) {
    // The name may be a bare one, which tells nobody where the library was found.
    const link_map* map = nullptr;
    const bool isLocated = dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 && *map->l_name != '\0';
    std::fprintf(stderr, "%s has no function %s, which every component must have.\n",
                 isLocated ? map->l_name : libraryName, kVersionFunction);
    std::fflush(stderr);
    std::signal(SIGSEGV, SIG_DFL);
    std::raise(SIGSEGV);
    std::abort();
}

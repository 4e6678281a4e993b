// Starts the program of its own name from the tree that it stands in. What the environment says already wins.
#include <dlfcn.h>
#include <sql.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string before(const std::string& path, int slashes) {
    std::string::size_type end = path.size();
    for (; slashes > 0 && end != std::string::npos; --slashes) {
        end = path.rfind('/', end - 1);
    }
    return path.substr(0, end);
}

std::string ownPath() {
    char path[PATH_MAX] = "";
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return std::string(path, length > 0 ? static_cast<std::size_t>(length) : 0);
}

// Where the driver manager finds the drivers that are named without a directory: beside itself.
std::string modules() {
    Dl_info place{};
    const bool isFound = dladdr(reinterpret_cast<void*>(SQLAllocHandle), &place) != 0 && *place.dli_fname == '/';
    return isFound ? ":" + before(place.dli_fname, 1) + "/odbc" : "";
}

void setWhereUnset(const char* name, const std::string& value) {
    const char* known = std::getenv(name);
    if (known == nullptr || *known == '\0') {
        setenv(name, value.c_str(), 1);
    }
}

}  // namespace

int main(int /*argc*/, char** argv) {
    const std::string path = ownPath();
    const std::string tree = before(path, 2);
    std::string name = path.substr(path.rfind('/') + 1);
    setWhereUnset("VH_INSTALLDIR", tree);
    setWhereUnset("KVLIB", tree + "/lib:" + tree + "/lib/setup" + modules());
    setWhereUnset("ODBCINST", tree + "/etc/odbcinst.ini");
    // The last place where help looks for a browser.
    const char* places = std::getenv("PATH");
    setenv("PATH", ((places == nullptr ? "" : places) + std::string(":") + tree + "/libexec/browser").c_str(), 1);

    const std::string program = tree + "/libexec/" + name;
    // X resources are looked up under the program's name, so it must be "odbcadmin" wherever it stands.
    argv[0] = name.data();
    execv(program.c_str(), argv);
    std::perror(program.c_str());
    return 127;
}

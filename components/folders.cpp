#include "components/folders.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace {

bool isOurs(const struct stat& status) {
    return status.st_uid == geteuid();
}

bool makeFolder(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) {
        return S_ISDIR(status.st_mode) && (isOurs(status) || geteuid() != 0);
    }
    return path.size() > 1 && makeFolder(parentFolder(path)) && (mkdir(path.c_str(), S_IRWXU) == 0 || errno == EEXIST);
}

}  // namespace

std::string environmentOr(const char* name, const std::string& otherwise) {
    const char* value = std::getenv(name);
    return value == nullptr || *value == '\0' ? otherwise : value;
}

std::string parentFolder(const std::string& path, int parts) {
    std::string::size_type end = path.size();
    for (; parts > 0 && end != std::string::npos; --parts) {
        end = path.rfind('/', end - 1);
    }
    return path.substr(0, end);
}

std::string cacheFolder() {
    const std::string all = environmentOr("XDG_CACHE_HOME", "");
    const std::string folder =
        (all.starts_with('/') ? all : environmentOr("HOME", "") + "/.cache") + "/varnholt-odbcadmin";
    struct stat status {};
    const bool isThere = folder.starts_with('/') && makeFolder(folder) && stat(folder.c_str(), &status) == 0;
    return isThere && isOurs(status) ? folder : "";
}

#include "components/cache_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

bool makeFolder(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) {
        return S_ISDIR(status.st_mode) && status.st_uid == geteuid();
    }
    return path.size() > 1 && makeFolder(above(path)) && mkdir(path.c_str(), S_IRWXU) == 0;
}

}  // namespace

std::string valueOf(const char* name, const std::string& otherwise) {
    const char* value = std::getenv(name);
    return value == nullptr || *value == '\0' ? otherwise : value;
}

std::string above(const std::string& path, int parts) {
    std::string::size_type end = path.size();
    for (; parts > 0 && end != std::string::npos; --parts) {
        end = path.rfind('/', end - 1);
    }
    return path.substr(0, end);
}

std::string cacheFolder() {
    const std::string folder = valueOf("XDG_CACHE_HOME", valueOf("HOME", "") + "/.cache") + "/varnholt-odbcadmin";
    return folder.starts_with('/') && makeFolder(folder) ? folder : "";
}

bool writeWhole(const std::string& path, const std::string& text) {
    const std::string part = path + "." + std::to_string(getpid());
    FILE* file = std::fopen(part.c_str(), "w");
    if (file == nullptr) {
        return false;
    }
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    if (std::fclose(file) != 0 || !isWritten || std::rename(part.c_str(), path.c_str()) != 0) {
        std::remove(part.c_str());
        return false;
    }
    return true;
}

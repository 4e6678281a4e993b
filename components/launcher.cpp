// Starts the program of its own name from the tree that it stands in. What the environment says already wins.
#include <dlfcn.h>
#include <sql.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "components/folders.h"
#include "components/small_files.h"

namespace {

std::string ownPath() {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    return std::string(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
}

// Where the driver manager finds the drivers that are named without a directory: beside itself.
std::string modules() {
    Dl_info place{};
    const bool isFound = dladdr(reinterpret_cast<void*>(SQLAllocHandle), &place) != 0 && *place.dli_fname == '/';
    return isFound ? ":" + parentFolder(place.dli_fname) + "/odbc" : "";
}

// The tree's own settings, with the help of the language whose texts are shown; the names of locales are those of
// folders.
std::string settingsOf(const std::string& tree) {
    std::string locale = environmentOr("LC_MESSAGES", "C");
    locale = locale == "C" ? environmentOr("LANG", "C") : locale;
    const std::string own = tree + "/etc/" + locale + "/odbcinst.ini";
    struct stat status {};
    return stat(own.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? own : tree + "/etc/odbcinst.ini";
}

// At each start Xlib reads half a megabyte of key sequences for its input method, which is much of a start, unless
// there is a folder where it may keep what it makes of them, closed to all others (Compose(5)). For root it keeps
// nothing.
void keepKeySequences() {
    if (std::getenv("XCOMPOSECACHE") != nullptr || geteuid() == 0 ||
        access((environmentOr("HOME", "") + "/.compose-cache").c_str(), F_OK) == 0) {
        return;
    }
    const std::string folder = cacheFolder();
    const std::string sequences = folder + "/compose";
    if (!folder.empty() && (mkdir(sequences.c_str(), S_IRWXU) == 0 || errno == EEXIST)) {
        setenv("XCOMPOSECACHE", sequences.c_str(), 1);
    }
}

// The tree may have been moved: its settings, which say where it stands, are then written anew, in the tree or for this
// person. Returns where they are; the old ones where they can be written nowhere.
std::string settleTree(const std::string& tree, const std::string& settings) {
    const std::string key = "\nInstallDir=";
    std::string text = "\n" + readFile(settings);
    const std::size_t entry = text.find(key);
    if (entry == std::string::npos || text.find(key + tree + "\n") != std::string::npos) {
        return settings;
    }
    const std::size_t begin = entry + key.size();
    // "=" and the old tree, at the end of a line or before a slash.
    const std::string before = "=" + text.substr(begin, text.find('\n', begin) - begin);
    const std::string now = "=" + tree;
    for (std::size_t at = 0; (at = text.find(before, at)) != std::string::npos; at += now.size()) {
        if (const std::size_t end = at + before.size(); end == text.size() || text[end] == '/' || text[end] == '\n') {
            text.replace(at, before.size(), now);
        }
    }
    const bool isOurs = access(parentFolder(settings).c_str(), W_OK) == 0;
    const std::string folder = isOurs ? parentFolder(settings) : cacheFolder();
    std::string place = isOurs ? settings : folder + "/odbcinst.ini";
    return !folder.empty() && writeFile(place, text.substr(1)) ? place : settings;
}

}  // namespace

int main(int /*argc*/, char** argv) {
    const std::string path = ownPath();
    const std::string tree = parentFolder(path, 2);
    std::string name = path.substr(path.rfind('/') + 1);
    const std::string own = settingsOf(tree);
    std::string settings = environmentOr("ODBCINST", own);
    if (settings == own) {
        settings = settleTree(tree, own);
    }
    setenv("ODBCINST", settings.c_str(), 1);
    setenv("VH_INSTALLDIR", environmentOr("VH_INSTALLDIR", tree).c_str(), 1);
    setenv("KVLIB", environmentOr("KVLIB", tree + "/lib:" + tree + "/lib/setup" + modules()).c_str(), 1);
    // The last place where help looks for a browser.
    setenv("PATH", (environmentOr("PATH", "/usr/bin:/bin") + ":" + tree + "/libexec/browser").c_str(), 1);

    if (name == "odbcadmin") {
        keepKeySequences();
    }

    const std::string program = tree + "/libexec/" + name;
    // X resources are looked up under the program's name, so it must be "odbcadmin" wherever it stands.
    argv[0] = name.data();
    execv(program.c_str(), argv);
    std::perror(program.c_str());
    return 127;
}

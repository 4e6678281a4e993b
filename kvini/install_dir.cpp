#include "kvini/install_dir.h"

#include <cstdlib>
#include <mutex>

#include "kvini/profile.h"
#include "kvlib/catalog.h"
#include "kvlib/text.h"

namespace {

constexpr const char* kSection = "ODBC";
constexpr const char* kEntry = "InstallDir";

void findDirectory(char (&directory)[kInstallDirSize]) {
    if (const char* value = std::getenv("VH_INSTALLDIR")) {
        strCopy(directory, sizeof directory, value);
    } else {
        kvGetProfileString(kSection, kEntry, "", directory, sizeof directory, ".odbc.ini");
    }
    if (*directory == '\0') {
        kvGetPrivateProfileString(kSection, kEntry, "", directory, sizeof directory, ".odbcinst.ini");
    }
}

// Drops white space and one "/" at the end. The first character counts as no white space, whatever it is; a "/" goes
// even when it is the first.
void dropDirectoryEnd(char* directory) {
    if (*directory == '\0') {
        return;
    }
    strRightTrim(directory + 1, kCPLocale);
    char* last = directory + BUTSTLEN(directory) - 1;
    if (*last == '/') {
        *last = '\0';
    }
}

}  // namespace

std::uint32_t bosSetInstallDir(const char* dir) {
    char directory[kInstallDirSize] = "";
    const std::lock_guard hold(CritOpen);
    if (dir != nullptr) {
        strCopy(directory, sizeof directory, dir);
    } else {
        findDirectory(directory);
    }
    dropDirectoryEnd(directory);
    strCopy(InstallDirLocation, sizeof InstallDirLocation, directory);
    return *InstallDirLocation == '\0' ? 1 : 0;
}

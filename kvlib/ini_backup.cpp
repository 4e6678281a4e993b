#include "kvlib/ini_backup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <utility>

#include "bos/errno_mapping.h"
#include "bos/file.h"
#include "kvlib/error_report.h"

namespace {

constexpr int kNamesTried = 100;
constexpr mode_t kPermissions = 0777;
constexpr mode_t kGroupPermissions = 0070;

// Gives the copy the owner and the permission of the file. Where the group can't be had, its rights go to nobody.
bool becomeLike(int descriptor, const struct stat& file) {
    mode_t mode = file.st_mode & kPermissions;
    constexpr auto kSameOwner = static_cast<uid_t>(-1);
    if (fchown(descriptor, file.st_uid, file.st_gid) != 0 && fchown(descriptor, kSameOwner, file.st_gid) != 0) {
        mode &= ~kGroupPermissions;
    }
    return fchmod(descriptor, mode) == 0;
}

}  // namespace

bool IniBackup::make(const std::string& file, std::string_view text) {
    struct stat status = {};
    if (stat(file.c_str(), &status) != 0) {
        bosMapError(errno, file.c_str());
        return false;
    }
    const int descriptor = create(file);
    if (descriptor < 0) {
        return false;
    }
    const bool whole = fill(descriptor, status, text);
    close(descriptor);
    if (!whole) {
        remove();
    }
    return whole;
}

void IniBackup::remove() {
    unlink(path_.c_str());
}

bool IniBackup::fill(int descriptor, const struct stat& file, std::string_view text) const try {
    if (!becomeLike(descriptor, file)) {
        bosMapError(errno, path_.c_str());
        return false;
    }
    return bosFileWrite(descriptor, 0, text.data(), text.size()) == 0 && bosFileSync(descriptor) == 0;
} catch (const std::bad_alloc&) {
    ramAddMemoryError();
    return false;
}

// Under the first name that nobody uses: "x~" may be an editor's backup, or the copy of an update that was killed.
int IniBackup::create(const std::string& file) {
    std::string path = file + "~";
    for (int number = 1; number <= kNamesTried; ++number) {
        const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
        if (descriptor >= 0) {
            // Not before: whatever has the name of path_ may be removed.
            path_ = std::move(path);
            return descriptor;
        }
        if (errno != EEXIST || number == kNamesTried) {
            break;
        }
        path = file + ".~" + std::to_string(number) + "~";
    }
    bosMapError(errno, path.c_str());
    return -1;
}

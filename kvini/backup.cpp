#include "kvini/backup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "bos/errno_mapping.h"
#include "bos/file.h"
#include "kvlib/out_of_memory.h"

namespace {

constexpr int kNamesTried = 100;
constexpr mode_t kPermissions = 0777;

// Whether the folder takes no copy: the file is rewritten without one then, so that users can save. After any other
// failure, such as a full disk, the rewriting might fail too, with no copy to help, so the file is left alone.
bool isRefusedByFolder(int systemError) {
    return systemError == EACCES || systemError == EPERM || systemError == EROFS || systemError == ENAMETOOLONG ||
           systemError == EEXIST;
}

// With an access control list the permission bits do not tell who may do what (acl(5)).
bool hasAccessList(const std::string& file, int copy) {
    constexpr char kAttribute[] = "system.posix_acl_access";
    return getxattr(file.c_str(), kAttribute, nullptr, 0) > 0 || fgetxattr(copy, kAttribute, nullptr, 0) > 0;
}

// A link may lead to a file in a folder that few people may enter; the copy stands beside the link, in another folder.
// A file that can't be looked at counts as one.
bool isLink(const std::string& file) {
    struct stat status = {};
    return lstat(file.c_str(), &status) != 0 || S_ISLNK(status.st_mode);
}

// Gives the copy the owner and the permissions of the file, as far as the user may. When that is not enough to keep
// everybody out of the copy who can't read the file, its owner alone gets permissions.
void adoptPermissions(int copy, const std::string& file, const struct stat& status) {
    constexpr auto kSameOwner = static_cast<uid_t>(-1);
    const bool hasGroup =
        fchown(copy, status.st_uid, status.st_gid) == 0 || fchown(copy, kSameOwner, status.st_gid) == 0;
    const bool permissionsProtect = hasGroup && !isLink(file) && !hasAccessList(file, copy);
    fchmod(copy, status.st_mode & (permissionsProtect ? kPermissions : mode_t{S_IRWXU}));
}

// Brings the names in the folder of `file` to the disk, as far as its user may.
void syncFolder(const std::string& file) {
    const std::size_t slash = file.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : file.substr(0, slash + 1);
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
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
        const bool canDoWithout = isRefusedByFolder(-descriptor);
        if (!canDoWithout) {
            bosMapError(-descriptor, file.c_str());
        }
        return canDoWithout;
    }
    adoptPermissions(descriptor, file, status);
    const bool whole = fill(descriptor, text);
    close(descriptor);
    if (!whole) {
        remove();
    }
    return whole;
}

void IniBackup::remove() {
    if (!path_.empty()) {
        unlink(path_.c_str());
    }
}

bool IniBackup::fill(int descriptor, std::string_view text) const {
    return orMemoryError(false, [&] {
        if (bosFileWrite(descriptor, 0, text.data(), text.size()) != 0 || bosFileSync(descriptor) != 0) {
            return false;
        }
        syncFolder(path_);
        return true;
    });
}

// Under the first name that nobody uses: "x~" may be an editor's backup, or the copy of an update that was killed.
// Returns the descriptor, or the error of open(2), negated.
int IniBackup::create(const std::string& file) {
    std::string path = file + "~";
    for (int number = 1; number <= kNamesTried; ++number) {
        const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
        if (descriptor >= 0) {
            // Set only now: `remove` deletes whatever path_ names.
            path_ = std::move(path);
            return descriptor;
        }
        if (errno != EEXIST) {
            return -errno;
        }
        path = file + ".~" + std::to_string(number) + "~";
    }
    return -EEXIST;
}

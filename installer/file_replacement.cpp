#include "installer/file_replacement.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include "installer/configuration.h"

namespace installer {

namespace {

constexpr mode_t kOwnerOnlyMode = S_IRUSR | S_IWUSR;
constexpr mode_t kAnyMode = 07777;
constexpr const char* kAccessControlList = "system.posix_acl_access";

// Closes what it holds.
class Descriptor {
public:
    explicit Descriptor(int descriptor = -1) noexcept : descriptor_(descriptor) {}
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    explicit operator bool() const noexcept { return descriptor_ >= 0; }
    int get() const noexcept { return descriptor_; }
    void reset(int descriptor = -1) noexcept {
        if (descriptor_ >= 0) {
            const int reason = errno;
            close(descriptor_);
            errno = reason;
        }
        descriptor_ = descriptor;
    }

private:
    int descriptor_;
};

// With its last "/".
std::string directoryOf(const std::string& path) {
    const std::size_t size = path.rfind('/') + 1;
    return size > 0 ? path.substr(0, size) : "./";
}

bool readWhole(int descriptor, std::string& text) {
    char buffer[1 << 16];
    text.clear();
    while (true) {
        const ssize_t count = pread(descriptor, buffer, sizeof buffer, static_cast<off_t>(text.size()));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return count == 0;
        }
        text.append(buffer, static_cast<std::size_t>(count));
    }
}

bool writeAt(int descriptor, std::string_view text, std::size_t offset) {
    while (!text.empty()) {
        const ssize_t count = pwrite(descriptor, text.data(), text.size(), static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            errno = count == 0 ? ENOSPC : errno;
            return false;
        }
        offset += static_cast<std::size_t>(count);
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool writeWhole(int descriptor, std::string_view text) {
    return ftruncate(descriptor, 0) == 0 && writeAt(descriptor, text, 0) && fsync(descriptor) == 0;
}

bool syncDirectory(const std::string& path) {
    const Descriptor directory(open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Some file systems can't do it, and need not; and one may write where one may not read.
    return directory ? fsync(directory.get()) == 0 || errno == EINVAL : errno == EACCES;
}

// Whether the file still has the text that was read.
bool isAsRead(const FileText& old) {
    FileText now;
    return readFile(old.path, now) && now.status.has_value() == old.status.has_value() && now.text == old.text;
}

std::optional<std::string> attributeOf(int descriptor, const char* name) {
    const ssize_t size = fgetxattr(descriptor, name, nullptr, 0);
    if (size < 0) {
        return std::nullopt;
    }
    std::string value(static_cast<std::size_t>(size), '\0');
    const ssize_t count = fgetxattr(descriptor, name, value.data(), value.size());
    return count == size ? std::optional(value) : std::nullopt;
}

std::vector<std::string> attributeNames(int descriptor) {
    const ssize_t size = flistxattr(descriptor, nullptr, 0);
    std::string names(static_cast<std::size_t>(std::max<ssize_t>(size, 0)), '\0');
    const ssize_t count = flistxattr(descriptor, names.data(), names.size());
    names.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return attributeItems(names.c_str());
}

// Gives the new file the access control list and the extended attributes of the old one.
bool copyAttributes(int from, int to) {
    const std::vector<std::string> names = attributeNames(from);
    for (const std::string& name : names) {
        const std::optional<std::string> value = attributeOf(from, name.c_str());
        if (value && attributeOf(to, name.c_str()) != value &&
            fsetxattr(to, name.c_str(), value->data(), value->size(), 0) != 0) {
            return false;
        }
    }
    // The directory may have given it a list that the old one had not.
    const bool hasList = std::find(names.begin(), names.end(), kAccessControlList) != names.end();
    return hasList || !attributeOf(to, kAccessControlList) || fremovexattr(to, kAccessControlList) == 0;
}

bool takePermission(int descriptor, const FileText& old, Permission permission) {
    if (!old.status) {
        const mode_t mask = umask(0);
        umask(mask);
        return fchmod(descriptor, permission == Permission::kOwnerOnly ? kOwnerOnlyMode : 0666 & ~mask) == 0;
    }
    struct stat now {};
    if (fstat(descriptor, &now) != 0) {
        return false;
    }
    const bool hasOwner = now.st_uid == old.status->st_uid && now.st_gid == old.status->st_gid;
    if (!hasOwner && fchown(descriptor, old.status->st_uid, old.status->st_gid) != 0) {
        return false;
    }
    if (permission == Permission::kOwnerOnly) {
        return fchmod(descriptor, kOwnerOnlyMode) == 0;
    }
    const Descriptor source(open(old.path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    return source && fchmod(descriptor, old.status->st_mode & kAnyMode) == 0 &&
           copyAttributes(source.get(), descriptor);
}

// The new file while it is written, under a name beside the file that it is for.
class NewFile {
public:
    // With the lock the name is always the same, so that what a kill left behind goes with the next change.
    NewFile(const std::string& target, const DirectoryLock& lock)
        : path_(directoryOf(target) + (lock.isHeld() ? ".odbcadmin-new" : ".odbcadmin-new-XXXXXX")) {
        if (lock.isHeld()) {
            unlink(path_.c_str());
            file_.reset(open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnlyMode));
            if (file_ || errno != EEXIST) {
                return;
            }
            // Something that is no file has that name.
            path_ += "-XXXXXX";
        }
        file_.reset(mkostemp(path_.data(), O_CLOEXEC));
    }
    ~NewFile() {
        if (file_) {
            const int reason = errno;
            unlink(path_.c_str());
            errno = reason;
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    explicit operator bool() const noexcept { return static_cast<bool>(file_); }
    int descriptor() const noexcept { return file_.get(); }
    const std::string& path() const noexcept { return path_; }
    // What stands under the name now is not to be removed.
    void release() noexcept { file_.reset(); }

private:
    std::string path_;
    Descriptor file_;
};

ReplaceResult failed(int error) {
    return {ReplaceOutcome::kFailed, error};
}

// Not every file system knows the calls that look at what is in the place.
bool isUnknownCall(int error) {
    return error == EINVAL || error == ENOSYS;
}

// Puts the new file into its place where nothing is to be.
ReplaceResult installFirst(NewFile& file, const FileText& old) {
    if (renameat2(AT_FDCWD, file.path().c_str(), AT_FDCWD, old.path.c_str(), RENAME_NOREPLACE) != 0) {
        if (errno == EEXIST) {
            return {ReplaceOutcome::kChangedMeanwhile};
        }
        if (!isUnknownCall(errno) || link(file.path().c_str(), old.path.c_str()) != 0) {
            return errno == EEXIST ? ReplaceResult{ReplaceOutcome::kChangedMeanwhile} : failed(errno);
        }
    } else {
        file.release();
    }
    if (syncDirectory(old.path)) {
        return {};
    }
    const int reason = errno;
    unlink(old.path.c_str());
    return failed(reason);
}

// Changes places with the old file, and back when that turns out to be another than was read.
ReplaceResult install(NewFile& file, const FileText& old) {
    if (!old.status) {
        return installFirst(file, old);
    }
    const auto exchange = [&] {
        return renameat2(AT_FDCWD, file.path().c_str(), AT_FDCWD, old.path.c_str(), RENAME_EXCHANGE) == 0;
    };
    if (!exchange()) {
        if (errno == ENOENT) {
            return {ReplaceOutcome::kChangedMeanwhile};
        }
        if (!isUnknownCall(errno) || std::rename(file.path().c_str(), old.path.c_str()) != 0) {
            return failed(errno);
        }
        file.release();
        syncDirectory(old.path);
        return {};
    }
    FileText displaced;
    const bool isSame = readFile(file.path(), displaced) && displaced.text == old.text;
    if (isSame && syncDirectory(old.path)) {
        return {};
    }
    const int reason = errno;
    if (exchange()) {
        return isSame ? failed(reason) : ReplaceResult{ReplaceOutcome::kChangedMeanwhile};
    }
    if (isSame) {
        // The new text is there and stays, though nobody knows whether it would outlive a power failure.
        return {};
    }
    const int error = errno;
    file.release();
    return {ReplaceOutcome::kLeftHalf, error, file.path()};
}

std::vector<std::string> foldersForCopies() {
    std::vector<std::string> folders;
    if (const char* state = std::getenv("XDG_STATE_HOME"); state != nullptr && *state == '/') {
        folders.emplace_back(state);
    }
    const char* home = std::getenv("HOME");
    if (const passwd* entry = home == nullptr || *home != '/' ? getpwuid(getuid()) : nullptr) {
        home = entry->pw_dir;
    }
    for (const char* folder : {"", "/.local/state", "/.local/share", "/.config", "/.cache"}) {
        folders.push_back(std::string(home != nullptr ? home : "") + folder);
    }
    return folders;
}

// A copy of the old text elsewhere, safe on the disk, until it is not needed any more.
class SafeCopy {
public:
    explicit SafeCopy(const FileText& old) {
        int reason = 0;
        for (const std::string& folder : foldersForCopies()) {
            path_ = folder + "/.odbcadmin-copy-XXXXXX";
            const Descriptor file(mkostemp(path_.data(), O_CLOEXEC));
            if (!file) {
                // Of the home directory, the first: the others may not exist.
                reason = reason != 0 ? reason : errno;
                continue;
            }
            if (writeAt(file.get(), old.text, 0) && fsync(file.get()) == 0 && syncDirectory(path_)) {
                return;
            }
            reason = errno;
            unlink(path_.c_str());
            break;
        }
        path_.clear();
        errno = reason;
    }
    ~SafeCopy() {
        if (!path_.empty()) {
            unlink(path_.c_str());
        }
    }
    SafeCopy(const SafeCopy&) = delete;
    SafeCopy& operator=(const SafeCopy&) = delete;

    explicit operator bool() const noexcept { return !path_.empty(); }
    // Leaves the copy, and returns where it is.
    std::string release() { return std::exchange(path_, {}); }

private:
    std::string path_;
};

// Writes what differs in one call, which a kill does not divide. A shorter text is followed by line ends until the file
// is cut: at every moment it is the old text or the new one.
bool overwrite(int descriptor, std::string_view before, std::string_view text) {
    std::string whole(text);
    whole.resize(std::max(text.size(), before.size()), '\n');
    const auto same = std::mismatch(before.begin(), before.end(), whole.begin(), whole.end()).first - before.begin();
    const auto start = static_cast<std::size_t>(same);
    return writeAt(descriptor, std::string_view(whole).substr(start), start) &&
           (before.size() <= text.size() || ftruncate(descriptor, static_cast<off_t>(text.size())) == 0) &&
           fsync(descriptor) == 0;
}

ReplaceResult replaceInPlace(const FileText& old, const std::string& text, Permission permission) {
    const Descriptor file(open(old.path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK));
    if (!file) {
        return failed(errno);
    }
    SafeCopy copy(old);
    if (!copy) {
        return failed(errno);
    }
    if (permission == Permission::kOwnerOnly && fchmod(file.get(), kOwnerOnlyMode) != 0) {
        return failed(errno);
    }
    std::string now;
    if (!readWhole(file.get(), now)) {
        return failed(errno);
    }
    if (now != old.text) {
        return {ReplaceOutcome::kChangedMeanwhile};
    }
    if (overwrite(file.get(), old.text, text)) {
        return {};
    }
    const int reason = errno;
    if (writeAt(file.get(), old.text, 0) && ftruncate(file.get(), static_cast<off_t>(old.text.size())) == 0) {
        fsync(file.get());
        return failed(reason);
    }
    return {ReplaceOutcome::kLeftHalf, reason, copy.release()};
}

ReplaceResult replaceByNewFile(const FileText& old, const std::string& text, Permission permission,
                               const DirectoryLock& lock) {
    NewFile file(old.path, lock);
    if (!file) {
        return failed(errno);
    }
    if (!isAsRead(old)) {
        return {ReplaceOutcome::kChangedMeanwhile};
    }
    // The permission before the text, which may hold passwords.
    return takePermission(file.descriptor(), old, permission) && writeWhole(file.descriptor(), text)
               ? install(file, old)
               : failed(errno);
}

// Whether a file in this place can only be written, not replaced: the directory is somebody else's, the file has an
// owner that may not be given away or attributes that can't be set anew, or it is mounted by itself.
bool takesNoNewFile(int error) {
    return error == EACCES || error == EPERM || error == EROFS || error == EBUSY || error == EXDEV ||
           error == EOPNOTSUPP;
}

}  // namespace

std::string followLinks(std::string path) {
    // As many as the system follows.
    constexpr int kMostLinks = 40;
    std::error_code failure;
    for (int count = 0; count < kMostLinks; ++count) {
        const std::filesystem::path target = std::filesystem::read_symlink(path, failure);
        if (failure) {
            return path;
        }
        path = target.is_absolute() ? target.string() : directoryOf(path) + target.string();
    }
    return path;
}

DirectoryLock::DirectoryLock(const std::string& path)
    : directory_(open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    constexpr int kMostTries = 500;
    constexpr useconds_t kPause = 10'000;
    for (int count = 0; directory_ >= 0 && !isHeld_ && count < kMostTries; ++count) {
        isHeld_ = flock(directory_, LOCK_EX | LOCK_NB) == 0;
        if (!isHeld_ && errno != EWOULDBLOCK) {
            return;
        }
        if (!isHeld_) {
            usleep(kPause);
        }
    }
}

DirectoryLock::~DirectoryLock() {
    if (directory_ >= 0) {
        close(directory_);
    }
}

bool readFile(const std::string& path, FileText& file) {
    file = {path, std::nullopt, {}};
    // Without waiting: a pipe has no end.
    const Descriptor descriptor(open(file.path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!descriptor) {
        return errno == ENOENT;
    }
    struct stat status {};
    if (fstat(descriptor.get(), &status) != 0) {
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        return false;
    }
    file.status = status;
    return readWhole(descriptor.get(), file.text);
}

ReplaceResult replaceFile(const FileText& old, const std::string& text, Permission permission,
                          const DirectoryLock& lock) {
    // A new file could take the place of one that nobody may write.
    if (old.status && access(old.path.c_str(), W_OK) != 0) {
        return failed(errno);
    }
    if (old.status && old.status->st_nlink > 1) {
        return replaceInPlace(old, text, permission);
    }
    ReplaceResult result = replaceByNewFile(old, text, permission, lock);
    const bool canBeWritten = old.status && result.outcome == ReplaceOutcome::kFailed && takesNoNewFile(result.error);
    return canBeWritten ? replaceInPlace(old, text, permission) : result;
}

bool writeCopy(const FileText& old, const std::string& path, const DirectoryLock& lock) {
    NewFile file(path, lock);
    if (!file || !takePermission(file.descriptor(), old, Permission::kKept) ||
        !writeWhole(file.descriptor(), old.text) || std::rename(file.path().c_str(), path.c_str()) != 0) {
        return false;
    }
    file.release();
    return syncDirectory(path);
}

}  // namespace installer

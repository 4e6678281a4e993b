#include "kvini/rewriting.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "bos/errno_mapping.h"
#include "bos/file.h"
#include "catalogs/message_numbers.h"
#include "kvini/backup.h"
#include "kvlib/text.h"

namespace {

// The file is emptied later, when what it holds under the lock was read.
constexpr std::uint32_t kRewriteFlags = OpenFlag::kCreate | OpenFlag::kReadWrite | OpenFlag::kExclusiveLock;

}  // namespace

int LockedIniFile::openAs(std::uint32_t flags) {
    char path[kPathSize];
    copyCut(path, sizeof path, path_);
    flags_ = flags;
    return openFile(path, flags, &descriptor_);
}

int LockedIniFile::openLocked() {
    const int systemError = openAs(kRewriteFlags);
    const std::uint16_t number = libraryErrorNumber(systemError);
    // Where locking as such may be what was refused, the file is written without it. Two of the numbers stand for
    // errors that this platform does not have.
    if (systemError != 0 && (number == LibraryMessage::kLockRefused || number == LibraryMessage::kAccessDenied ||
                             number == LibraryMessage::kReadOnlyFile)) {
        return openAs(kRewriteFlags & ~std::uint32_t{OpenFlag::kExclusiveLock});
    }
    return systemError;
}

bool LockedIniFile::open() {
    for (;;) {
        struct stat status = {};
        int systemError = stat(path_.c_str(), &status) == 0 ? 0 : errno;
        if (systemError == 0) {
            turn_.emplace(status);
            systemError = openLocked();
        }
        if (systemError == 0 && fstat(descriptor_, &status) != 0) {
            systemError = errno;
        }
        if (systemError != 0) {
            bosMapError(systemError, path_.c_str());
            close();
            return false;
        }
        if (turn_->isWith(status)) {
            return true;
        }
        // Somebody put another file in its place, which another thread may have locked.
        turn_.emplace(status);
        close();
    }
}

bool LockedIniFile::read(std::string& text, bool& isWhole) const {
    std::uint64_t size = 0;
    std::uint64_t got = 0;
    if (bosFileSize(descriptor_, &size) != 0) {
        return false;
    }
    // One byte more, which tells that the file grew.
    text.resize(size + 1);
    if (bosFileRead(descriptor_, 0, text.data(), text.size(), &got) != 0) {
        return false;
    }
    text.resize(got);
    isWhole = got == size;
    return true;
}

bool LockedIniFile::replaceText(std::string_view oldText, std::string_view text) {
    IniBackup backup;
    if (!backup.make(path_, oldText)) {
        return false;
    }
    const bool written = bosFileTruncate(descriptor_, 0) == 0 && write(text);
    // The copy goes only when the file is whole again, with the old text or the new.
    if (written || putBack(oldText)) {
        backup.remove();
    }
    return written;
}

bool LockedIniFile::write(std::string_view text) const {
    return bosFileWrite(descriptor_, 0, text.data(), text.size()) == 0 &&
           bosFileTruncate(descriptor_, text.size()) == 0 && bosFileSync(descriptor_) == 0;
}

// Writes the old text over what was written of the new one; the disk still has the room for it.
bool LockedIniFile::putBack(std::string_view oldText) {
    if (write(oldText)) {
        return true;
    }
    // The descriptor may be what failed. With it went the lock, which another program may hold by now.
    const std::uint32_t flags = flags_ & ~std::uint32_t{OpenFlag::kCreate};
    ::close(descriptor_);
    return openAs(flags) == 0 && write(oldText);
}

void LockedIniFile::close() {
    if (descriptor_ != 0) {
        // What close says changes nothing: the text is on the disk, or known not to be.
        ::close(descriptor_);
        descriptor_ = 0;
    }
    turn_.reset();
}

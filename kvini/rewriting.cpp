#include "kvini/rewriting.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>

#include "bos/errno_mapping.h"
#include "bos/file.h"
#include "catalogs/message_numbers.h"
#include "kvini/backup.h"
#include "kvlib/text.h"

namespace {

constexpr std::uint32_t kRewriteFlags =
    OpenFlag::kCreate | OpenFlag::kReadWrite | OpenFlag::kExclusiveLock | OpenFlag::kTruncate;

// The file that is rewritten, open or not.
class RewrittenFile {
public:
    RewrittenFile(const std::string& path, std::string_view oldText) : path_(path), oldText_(oldText) {}
    ~RewrittenFile() { close(); }
    RewrittenFile(const RewrittenFile&) = delete;
    RewrittenFile& operator=(const RewrittenFile&) = delete;

    // Opens and empties the file. False with the reason recorded.
    bool open();
    // Writes `text` over what is in the open file. False with the reason recorded.
    bool replaceText(std::string_view text) const;
    // Whether a failed `open` may have emptied the file all the same, as a file system on another machine can. A file
    // whose size can't be asked counts as emptied.
    bool mayBeEmptied() const;
    // Writes the old text over what was written of the new one; the disk still has the room for it.
    bool putBack();
    void close();

private:
    int openAs(std::uint32_t flags);

    const std::string& path_;
    std::string_view oldText_;
    int descriptor_ = 0;  // 0 when not open
};

int RewrittenFile::openAs(std::uint32_t flags) {
    char path[kPathSize];
    copyCut(path, sizeof path, path_);
    return openFile(path, flags, &descriptor_);
}

bool RewrittenFile::open() {
    int systemError = openAs(kRewriteFlags);
    const std::uint16_t number = libraryErrorNumber(systemError);
    // Where the lock may be what was refused, the file is written without it. Two of the numbers stand for errors that
    // this platform does not have.
    if (systemError != 0 && (number == LibraryMessage::kLockRefused || number == LibraryMessage::kAccessDenied ||
                             number == LibraryMessage::kReadOnlyFile)) {
        systemError = openAs(kRewriteFlags & ~std::uint32_t{OpenFlag::kExclusiveLock});
    }
    if (systemError != 0) {
        bosMapError(systemError, path_.c_str());
    }
    return systemError == 0;
}

bool RewrittenFile::replaceText(std::string_view text) const {
    return bosFileWrite(descriptor_, 0, text.data(), text.size()) == 0 &&
           bosFileTruncate(descriptor_, text.size()) == 0 && bosFileSync(descriptor_) == 0;
}

bool RewrittenFile::mayBeEmptied() const {
    struct stat status = {};
    return !oldText_.empty() && (stat(path_.c_str(), &status) != 0 || status.st_size == 0);
}

bool RewrittenFile::putBack() {
    if (descriptor_ != 0 && replaceText(oldText_)) {
        return true;
    }
    // The descriptor may be what failed.
    close();
    return openAs(OpenFlag::kReadWrite) == 0 && replaceText(oldText_);
}

void RewrittenFile::close() {
    if (descriptor_ != 0) {
        // What close says changes nothing: the text is on the disk, or known not to be.
        ::close(descriptor_);
        descriptor_ = 0;
    }
}

}  // namespace

bool rewriteIniFile(const std::string& path, std::string_view oldText, std::string_view text) {
    IniBackup backup;
    if (!backup.make(path, oldText)) {
        return false;
    }
    RewrittenFile file(path, oldText);
    const bool opened = file.open();
    const bool written = opened && file.replaceText(text);
    const bool isWhole = written || (!opened && !file.mayBeEmptied()) || file.putBack();
    file.close();
    // The copy goes only when the file is whole again, with the old text or the new.
    if (isWhole) {
        backup.remove();
    }
    return written;
}

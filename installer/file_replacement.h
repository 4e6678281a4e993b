// Putting a new text in the place of a file's old one, all or nothing: whatever fails, and whenever the process is
// killed, the file holds the one or the other whole. docs/careful-writing.md tells the steps.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

namespace installer {

// The file that a path leads to through symbolic links, also when that is not there yet.
[[nodiscard]] std::string followLinks(std::string path);

// Keeps other processes that change files in this way out of the directory of `path`, while it lives. After five
// seconds, and where a file system can't lock, it does without: nothing is lost then either, it only saves tries.
class DirectoryLock {
public:
    explicit DirectoryLock(const std::string& path);
    ~DirectoryLock();
    DirectoryLock(const DirectoryLock&) = delete;
    DirectoryLock& operator=(const DirectoryLock&) = delete;

    bool isHeld() const noexcept { return isHeld_; }

private:
    int directory_;
    bool isHeld_ = false;
};

// A file as it was read.
struct FileText {
    std::string path;
    std::optional<struct stat> status;  // Nothing for a file that is not there: its text is empty.
    std::string text;
};

// Reads the file `path`, which is no symbolic link. False, with errno set, when it can't be read; EINVAL for what is no
// regular file.
[[nodiscard]] bool readFile(const std::string& path, FileText& file);

enum class ReplaceOutcome {
    kDone,
    kChangedMeanwhile,  // Somebody else wrote since it was read. Nothing was done.
    kFailed,            // Nothing was done.
    kLeftHalf           // Putting the old text back failed too.
};
struct ReplaceResult {
    ReplaceOutcome outcome = ReplaceOutcome::kDone;
    int error = 0;       // errno of a failure.
    std::string copy{};  // With kLeftHalf, where the old text is.
};

enum class Permission {
    kKept,      // Owner, group, mode, access control list and extended attributes; those of a new file are the umask's.
    kOwnerOnly  // Readable for its owner alone, because there is a password in it.
};

// Replaces the text of `old`, or makes the file. A new file takes its place; where the directory takes none, or the
// file has more names than one, it is written in place, after a copy was made elsewhere in the home directory. `lock`
// is that of its directory.
[[nodiscard]] ReplaceResult replaceFile(const FileText& old, const std::string& text, Permission permission,
                                        const DirectoryLock& lock);

// Puts the text of `old` into the file `path` beside it, with its owner and permission. What was there goes. False,
// with errno set, when that failed: what was there is still there.
[[nodiscard]] bool writeCopy(const FileText& old, const std::string& path, const DirectoryLock& lock);

}  // namespace installer

#include "setup/file_dsn_store.h"

#include <fcntl.h>
#include <odbcinst.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

#include "installer/file_dsn.h"
#include "setup/setup_texts.h"

using installer::Attribute;

namespace {

// The installer library keeps longer names to itself, with no word.
constexpr std::size_t kLongestPath = 1023;
constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

SetupFailure wrong(SetupMessage::Number text, const std::string& path) {
    return {ODBC_ERROR_REQUEST_FAILED, setupText(text, path), {}};
}

std::optional<std::string> contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    return file.bad() ? std::nullopt : std::optional(std::move(text));
}

// Whether the installer library can rewrite the text: of a longer line it would make two.
bool hasLongLine(const std::string& text) {
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        if (end - start > installer::kLongestLine) {
            return true;
        }
        start = end + 1;
    }
    return false;
}

// A file beside `target` that takes its place, or goes again with this object.
class Replacement {
public:
    // `target` is no symbolic link.
    explicit Replacement(const std::string& target) : target_(target) {
        path_ = target.substr(0, target.rfind('/') + 1) + ".vhsetup-XXXXXX.dsn";
        descriptor_ = mkostemps(path_.data(), static_cast<int>(installer::kFileDsnExtension.size()), O_CLOEXEC);
    }
    ~Replacement() {
        if (descriptor_ >= 0) {
            close(descriptor_);
            unlink(path_.c_str());
        }
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    explicit operator bool() const { return descriptor_ >= 0; }
    const std::string& path() const { return path_; }

    bool fill(const std::string& text) const {
        const ssize_t written = write(descriptor_, text.data(), text.size());
        return written >= 0 && static_cast<std::size_t>(written) == text.size();
    }
    // Gives it the owner, as far as that is allowed, and the permission of the file that it is for.
    bool takePermission(const std::optional<struct stat>& before, bool holdsPassword) const {
        mode_t mode = 0666;
        if (before) {
            mode = before->st_mode & 07777;
            if (fchown(descriptor_, before->st_uid, before->st_gid) != 0) {
                mode &= 0777;
            }
        } else {
            const mode_t mask = umask(0);
            umask(mask);
            mode &= ~mask;
        }
        return fchmod(descriptor_, holdsPassword ? kOwnerOnly : mode) == 0;
    }
    // Puts it in the place of the file, safe on the disk first.
    bool install() {
        if (fsync(descriptor_) != 0 || std::rename(path_.c_str(), target_.c_str()) != 0) {
            return false;
        }
        close(descriptor_);
        descriptor_ = -1;
        return true;
    }

private:
    std::string target_;
    std::string path_;
    int descriptor_ = -1;
};

bool areSame(const Settings& some, const Settings& others) {
    return some.size() == others.size() && std::all_of(some.begin(), some.end(), [&others](const Attribute& setting) {
               const std::string* value = findValue(others, setting.key);
               return value != nullptr && *value == setting.value;
           });
}

// The file that `path` means when it is a symbolic link; `path` itself when there is none yet.
std::string resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    return real ? real.get() : path;
}

// Makes the section of the file, which holds `present`, hold exactly `wanted`. The library says nothing of a full disk:
// the result is read again.
bool writeSection(const std::string& path, const Settings& present, const Settings& wanted) {
    const auto write = [&path](const std::string& key, const char* value) {
        return installer::writeFileDsnValue(path, key, value);
    };
    return writeChanges(present, wanted, write) && areSame(readFileDataSource(path), wanted);
}

// The file as it is before the change.
struct StoredFile {
    std::string path;                   // No symbolic link.
    std::optional<struct stat> status;  // Nothing for a file that is not there.
    std::string text;                   // What is to be kept, empty for a file that is made anew.
    Settings settings;                  // What the text says.
};

// Reads the file at `file.path`, its text only when that `isKept`; returns what stands in the way of changing it.
std::optional<SetupMessage::Number> load(bool isKept, StoredFile& file) {
    struct stat status {};
    if (stat(file.path.c_str(), &status) == 0) {
        file.status = status;
        if (!S_ISREG(status.st_mode) || access(file.path.c_str(), W_OK) != 0) {
            return SetupMessage::kFileNotWritten;
        }
    }
    if (!isKept) {
        return std::nullopt;
    }
    const std::optional<std::string> text = contentOf(file.path);
    if (!text) {
        return SetupMessage::kNoSuchFile;
    }
    if (hasLongLine(*text)) {
        return SetupMessage::kFileHasLongLine;
    }
    file.text = *text;
    file.settings = readFileDataSource(file.path);
    return std::nullopt;
}

// What the file is to hold after the change.
Settings merge(const Settings& stored, const DataSourceChange& change) {
    Settings wanted = stored;
    if (!installer::sameName(installer::driverName(valueOf(wanted, kDriverKey)), change.driver)) {
        setValue(wanted, kDriverKey, change.driver);
    }
    applyChanges(change.values, wanted);
    return wanted;
}

// Puts a file with these settings in its place.
bool replace(const StoredFile& file, const Settings& wanted) {
    const bool holdsPassword = std::any_of(wanted.begin(), wanted.end(), [](const Attribute& setting) {
        return installer::isPasswordKey(setting.key) && !setting.value.empty();
    });
    Replacement replacement(file.path);
    return replacement && replacement.fill(file.text) && writeSection(replacement.path(), file.settings, wanted) &&
           replacement.takePermission(file.status, holdsPassword) && replacement.install();
}

}  // namespace

std::optional<SetupFailure> checkFileName(const std::string& path) {
    if (!path.starts_with('/') || path.ends_with('/') || path.size() > kLongestPath) {
        return SetupFailure{ODBC_ERROR_INVALID_PATH, setupText(SetupMessage::kFileNameInvalid, path), {}};
    }
    return std::nullopt;
}

bool fileExists(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 || errno != ENOENT;
}

Settings readFileDataSource(const std::string& path) {
    Settings settings;
    for (Attribute& setting : installer::readSection(installer::kFileDsnSection, path)) {
        // Of a key that stands there twice every program reads the first.
        if (findValue(settings, setting.key) == nullptr) {
            settings.push_back(std::move(setting));
        }
    }
    return settings;
}

std::optional<SetupFailure> saveFileDataSource(const DataSourceChange& change) {
    if (std::optional<SetupFailure> failure = checkSettings(change.values)) {
        return failure;
    }
    StoredFile file;
    file.path = resolved(change.name);
    if (const std::optional<SetupMessage::Number> problem = load(!change.storedName.empty(), file)) {
        return wrong(*problem, change.name);
    }
    const Settings wanted = merge(file.settings, change);
    if (!change.storedName.empty() && areSame(wanted, file.settings)) {
        // Any write would drop the comments in it.
        return std::nullopt;
    }
    return replace(file, wanted) ? std::nullopt : std::optional(wrong(SetupMessage::kFileNotWritten, change.name));
}

#include "kvini/cache.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <new>
#include <optional>
#include <thread>

#include "bos/errno_mapping.h"
#include "bos/file.h"
#include "bos/file_names.h"
#include "catalogs/message_numbers.h"
#include "kvini/backup.h"
#include "kvini/grammar.h"
#include "kvini/lock.h"
#include "kvini/trace.h"
#include "kvlib/catalog.h"
#include "kvlib/error_report.h"
#include "kvlib/narrow_text.h"
#include "kvlib/per_thread_data.h"
#include "kvlib/text.h"

namespace {

constexpr std::uint32_t kLoadFlags = OpenFlag::kRecogniseNames | OpenFlag::kReadWrite;
constexpr std::uint32_t kRewriteFlags =
    OpenFlag::kCreate | OpenFlag::kReadWrite | OpenFlag::kExclusiveLock | OpenFlag::kTruncate;
constexpr std::size_t kLongestValue = 2047;
constexpr unsigned long kNumberBufferSize = 20;
constexpr unsigned long kLongestWideList = 0x100000;

// How often, and after which pause, an update reads a file again that another program is rewriting.
constexpr int kReadings = 10;
constexpr std::chrono::milliseconds kReadingPause(10);

std::optional<std::string_view> optionalView(const char* text) {
    return text == nullptr ? std::nullopt : std::optional<std::string_view>(text);
}

unsigned long copyCut(std::string_view text, char* buffer, unsigned long size) {
    if (size == 0) {
        return 0;
    }
    const std::size_t length = std::min<std::size_t>(text.size(), size - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
    return length;
}

// The wide form of what a read returned: lists end in a zero of their own and may fill the buffer.
unsigned long copyWide(std::u16string_view text, bool isList, char16_t* buffer, unsigned long size) {
    if (size == 0) {
        return 0;
    }
    if (text.size() < size || (isList && text.size() == size)) {
        text.copy(buffer, text.size());
        if (text.size() < size) {
            buffer[text.size()] = u'\0';
        }
        return text.size();
    }
    text.copy(buffer, size - 1);
    buffer[size - 1] = u'\0';
    if (isList && size > 1) {
        buffer[size - 2] = u'\0';
    }
    return size;
}

// A failure to open that reading alone may still overcome. Two of the numbers that are asked for here and in
// openForRewriting stand for errors of other platforms; a read-only file system has its own number and fails.
bool isRefusal(std::uint16_t number) {
    return number == LibraryMessage::kNotPermitted || number == LibraryMessage::kAccessDenied ||
           number == LibraryMessage::kReadOnlyFile;
}

}  // namespace

// One read with its buffer.
struct KvIniFileCache::ReadCall {
    IniReadTrace trace;
    const char* section;
    const char* entry;
    const char* defaultText;
    char* buffer;
    unsigned long size;
};

KvIniFileCache::~KvIniFileCache() {
    closeDescriptor();
}

std::uint32_t KvIniFileCache::bosKvIniOpen(const char* name, std::uint32_t flags) try {
    return load(name, flags);
} catch (const std::bad_alloc&) {
    closeDescriptor();
    Close();
    ramAddMemoryError();
    return 1;
}

std::uint32_t KvIniFileCache::load(const std::string& name, std::uint32_t flags) {
    Close();
    traceIniOpening(name.c_str());
    openFlags_ = flags | kLoadFlags;
    std::uint32_t result = 0;
    std::string path;
    if (!openForLoading(name, path, result)) {
        // A driver file that is not there yet keeps its path: its cache can be shared, and loaded later.
        path_ = result == 0 ? path : "";
        return result;
    }
    path_ = path;
    result = readText();
    closeDescriptor();
    if (result != 0) {
        Close();
        return result;
    }
    state_ = kLoaded;
    traceIniLoaded(path_.c_str(), size_);
    return 0;
}

// Opens the file, read-only when it can't be written. False when there is nothing to read; `result` is the answer then.
bool KvIniFileCache::openForLoading(const std::string& name, std::string& path, std::uint32_t& result) {
    const bool isDriverFile = isDriverFileName(name);
    const bool hasErrorList = mdsGetPerThreadData(kThreadSlotErrorList) != nullptr;
    for (;;) {
        char buffer[kPathSize];
        const bool fits = copyCut(name, buffer, sizeof buffer) == name.size();
        const int systemError = fits ? openFile(buffer, openFlags_, &descriptor_) : ENAMETOOLONG;
        path = buffer;
        if (systemError == 0) {
            return true;
        }
        const std::uint16_t number = libraryErrorNumber(systemError);
        if ((openFlags_ & OpenFlag::kReadWrite) != 0 && (isDriverFile || !hasErrorList || isRefusal(number))) {
            openFlags_ &= ~std::uint32_t{OpenFlag::kReadWrite};
            if (isDriverFile || !hasErrorList) {
                openFlags_ &= ~std::uint32_t{OpenFlag::kCreateMissing};
            }
            continue;
        }
        if (!isDriverFile) {
            bosMapErrorAsWarning(systemError, path.c_str());
            result = 1;
        } else if (!hasErrorList || number == LibraryMessage::kFileNotFound) {
            result = 0;
        } else {
            bosMapError(systemError, path.c_str());
            result = 1;
        }
        return false;
    }
}

std::uint32_t KvIniFileCache::readText() {
    if (bosFileDateSize(path_.c_str(), &date_, &size_) != 0) {
        return 1;
    }
    std::uint64_t got = 0;
    text_.resize(size_);
    if (bosFileRead(descriptor_, 0, text_.data(), size_, &got) != 0) {
        return 1;
    }
    text_.resize(got);
    isPart_ = got != size_;
    if (isPart_) {
        // Another program rewrites the file right now, perhaps to the same size in the same second: read it again.
        date_ = 0;
        size_ = 0;
    }
    return 0;
}

std::uint32_t KvIniFileCache::proFileSync() {
    openLibraryCatalog();
    const IniLock hold(lock_);
    return sync();
}

std::uint32_t KvIniFileCache::sync() try {
    std::uint32_t date = 0;
    std::uint64_t size = 0;
    if (bosFileDateSize(path_.c_str(), &date, &size) != 0) {
        return 1;
    }
    if (date == date_ && size == size_) {
        return 0;
    }
    std::string path = path_;
    const std::uint32_t result = bosKvIniOpen(path.c_str(), 0);
    if (result != 0) {
        // Still the cache of this file, which the next call tries to read again.
        path_ = std::move(path);
        state_ = kLoaded;
    }
    return result;
} catch (const std::bad_alloc&) {
    ramAddMemoryError();
    return 1;
}

bool KvIniFileCache::isCurrent() {
    return state_ == kLoaded && sync() == 0 && state_ == kLoaded;
}

// Before an update: what was not seen would be lost, and the copy would not have it either. Others empty the file
// before they write it, so nothing is believed only when it is read twice.
bool KvIniFileCache::waitForWholeText() {
    for (int reading = 0; isPart_ || (text_.empty() && reading == 0); ++reading) {
        if (reading == kReadings) {
            bosMapError(EAGAIN, path_.c_str());
            return false;
        }
        std::this_thread::sleep_for(kReadingPause);
        if (!isCurrent()) {
            return false;
        }
    }
    return true;
}

unsigned long KvIniFileCache::bosGetProfileString(const char* section, const char* entry, const char* defaultText,
                                                  char* buffer, unsigned long size) {
    const ReadCall call = {IniReadTrace("GetProfileString:"), section, entry, defaultText, buffer, size};
    openLibraryCatalog();
    const IniLock hold(lock_);
    call.trace.beginString(path_.c_str(), section, entry);
    return read(call);
}

unsigned long KvIniFileCache::bosGetProfileSection(const char* section, char* buffer, unsigned long size) {
    const ReadCall call = {IniReadTrace("GetProfileSection:"), section, nullptr, nullptr, buffer, size};
    openLibraryCatalog();
    const IniLock hold(lock_);
    call.trace.beginSection(path_.c_str(), section);
    return read(call);
}

unsigned long KvIniFileCache::read(const ReadCall& call) {
    call.trace.defaultText(call.defaultText);
    unsigned long length = 0;
    bool found = isCurrent();
    if (found && call.section == nullptr) {
        length = listIniSections(text_, call.buffer, call.size);
    } else if (found) {
        found = call.entry == nullptr ? copyKeys(call, length) : copyValue(call, length);
    }
    if (!found) {
        length = copyCut(call.defaultText == nullptr ? "" : call.defaultText, call.buffer, call.size);
    }
    call.trace.result(length, call.size == 0 ? "" : call.buffer);
    return length;
}

bool KvIniFileCache::copyValue(const ReadCall& call, unsigned long& length) const {
    const std::optional<IniSection> section = findIniSection(text_, call.section);
    call.trace.found("Section", call.section, section.has_value());
    if (!section) {
        return false;
    }
    const std::optional<IniEntry> entry = findIniEntry(text_, *section, call.entry);
    call.trace.found("Entry", call.entry, entry.has_value());
    if (!entry) {
        return false;
    }
    const std::size_t whole = entry->valueEnd - entry->valueBegin;
    const std::string_view value(text_.data() + entry->valueBegin, std::min(whole, kLongestValue));
    call.trace.value(value);
    // An empty value counts as missing: it is how users of this format switch an entry off.
    if (value.empty()) {
        return false;
    }
    length = copyCut(value, call.buffer, call.size);
    if (value.size() >= call.size) {
        length = call.size;
    }
    return true;
}

bool KvIniFileCache::copyKeys(const ReadCall& call, unsigned long& length) const {
    call.trace.beginList(call.section);
    const std::optional<IniSection> section = findIniSection(text_, call.section);
    if (!section) {
        return false;
    }
    const std::optional<std::size_t> listed = listIniKeys(text_, *section, call.buffer, call.size);
    call.trace.list(std::string_view(call.buffer, listed.value_or(0)));
    length = listed.value_or(0);
    return listed.has_value();
}

unsigned long KvIniFileCache::bosGetProfileStringW(const char16_t* section, const char16_t* entry,
                                                   const char16_t* defaultText, char16_t* buffer,
                                                   unsigned long size) try {
    const bool listAsked = section == nullptr || entry == nullptr;
    // Room for any value, and for as many bytes as the units asked for can take.
    std::string bytes(kLongestValue + 1 + 3 * std::min(size, kLongestWideList), '\0');
    const unsigned long length = bosGetProfileString(Narrow(section).get(), Narrow(entry).get(),
                                                     Narrow(defaultText).get(), bytes.data(), bytes.size());
    bytes.resize(length);
    const bool isList = listAsked && !bytes.empty() && bytes.back() == '\0';
    return copyWide(toUtf16(bytes, kCPLocale), isList, buffer, size);
} catch (const std::bad_alloc&) {
    ramAddMemoryError();
    return copyWide(u"", false, buffer, size);
}

std::uint32_t KvIniFileCache::bosGetProfileInt(const char* section, const char* entry, std::uint32_t defaultValue) {
    if (section == nullptr || entry == nullptr) {
        return defaultValue;
    }
    char text[kNumberBufferSize];
    bosGetProfileString(section, entry, "", text, sizeof text);
    const char* end = text;
    while (*end >= '0' && *end <= '9') {
        ++end;
    }
    std::uint32_t value = 0;
    return std::from_chars(text, end, value).ec == std::errc{} ? value : defaultValue;
}

int KvIniFileCache::bosPutProfileString(const char* section, const char* entry, const char* value) try {
    openLibraryCatalog();
    const IniLock hold(lock_);
    if (state_ != kLoaded || section == nullptr) {
        return 0;
    }
    traceIniPut(path_.c_str(), section, entry, value);
    if (!isCurrent() || !waitForWholeText()) {
        return 0;
    }
    // Made before the file is emptied: what can fail without harm comes first.
    const IniUpdate update = updateIniText(text_, section, optionalView(entry), optionalView(value));
    const bool written = rewrite(update.text);
    date_ = 0;
    size_ = 0;
    if (!written) {
        return 0;
    }
    traceIniChange(update.change, section, entry, value);
    sync();
    traceIniRewritten(text_);
    return 1;
} catch (const std::bad_alloc&) {
    ramAddMemoryError();
    return 0;
}

bool KvIniFileCache::openForRewriting() {
    std::uint32_t flags = kRewriteFlags;
    for (;;) {
        char path[kPathSize];
        copyCut(path_, path, sizeof path);
        const int systemError = openFile(path, flags, &descriptor_);
        if (systemError == 0) {
            return true;
        }
        const std::uint16_t number = libraryErrorNumber(systemError);
        const bool lockMayBeWhy = number == LibraryMessage::kLockRefused || number == LibraryMessage::kAccessDenied ||
                                  number == LibraryMessage::kReadOnlyFile;
        if (!lockMayBeWhy || (flags & OpenFlag::kExclusiveLock) == 0) {
            bosMapError(systemError, path);
            return false;
        }
        flags &= ~std::uint32_t{OpenFlag::kExclusiveLock};
    }
}

// Makes `text` the whole of the file. The copy of the old text goes only when the file is whole again, old or new.
bool KvIniFileCache::rewrite(std::string_view text) {
    IniBackup backup;
    if (!backup.make(path_, text_)) {
        return false;
    }
    const bool opened = openForRewriting();
    const bool written = opened && replaceText(text);
    const bool whole = written || (!opened && !mayBeEmptied()) || putBack();
    closeDescriptor();
    if (whole) {
        backup.remove();
    }
    return written;
}

bool KvIniFileCache::replaceText(std::string_view text) const {
    return bosFileWrite(descriptor_, 0, text.data(), text.size()) == 0 &&
           bosFileTruncate(descriptor_, text.size()) == 0 && bosFileSync(descriptor_) == 0;
}

// Whether an emptying that was reported as failed may have happened all the same, as where the disk is another
// machine's. A file that doesn't tell its size counts as emptied.
bool KvIniFileCache::mayBeEmptied() const {
    struct stat status = {};
    return !text_.empty() && (stat(path_.c_str(), &status) != 0 || status.st_size == 0);
}

// Writes the old text over the part that was written of the new one, whose room on the disk is still ours.
bool KvIniFileCache::putBack() {
    if (descriptor_ != 0 && replaceText(text_)) {
        return true;
    }
    // The descriptor may be what failed.
    closeDescriptor();
    char path[kPathSize];
    copyCut(path_, path, sizeof path);
    return openFile(path, OpenFlag::kReadWrite, &descriptor_) == 0 && replaceText(text_);
}

void KvIniFileCache::closeDescriptor() {
    if (descriptor_ != 0) {
        // What close says changes nothing: the text was read, or is on the disk.
        close(descriptor_);
        descriptor_ = 0;
    }
}

void KvIniFileCache::Close() {
    path_.clear();
    text_.clear();
    date_ = 0;
    size_ = 0;
    isPart_ = false;
    state_ = kNotLoaded;
}

std::uint32_t KvIniFileCache::incrementUseCount() {
    const IniLock hold(lock_);
    return ++useCount_;
}

std::uint32_t KvIniFileCache::decrementUseCount() {
    const IniLock hold(lock_);
    return --useCount_;
}

bool KvIniFileCache::hasPath(std::string_view path) {
    const IniLock hold(lock_);
    return path_ == path;
}

void KvIniFileCache::loadIfNotLoaded(const char* name, std::uint32_t flags) {
    const IniLock hold(lock_);
    if (state_ != kLoaded) {
        std::string path = path_;
        if (bosKvIniOpen(name, flags) != 0) {
            path_ = std::move(path);
        }
    }
}

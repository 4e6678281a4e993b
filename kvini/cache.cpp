#include "kvini/cache.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <optional>
#include <thread>

#include "bos/errno_mapping.h"
#include "bos/file.h"
#include "bos/file_names.h"
#include "catalogs/message_numbers.h"
#include "kvini/file_turn.h"
#include "kvini/grammar.h"
#include "kvini/lock.h"
#include "kvini/rewriting.h"
#include "kvini/trace.h"
#include "kvlib/library_text.h"
#include "kvlib/narrow_text.h"
#include "kvlib/out_of_memory.h"
#include "kvlib/per_thread_data.h"
#include "kvlib/text.h"

namespace {

constexpr std::uint32_t kLoadFlags = OpenFlag::kRecogniseNames | OpenFlag::kReadWrite;
constexpr std::size_t kLongestValue = 2047;
constexpr unsigned long kNumberBufferSize = 20;
constexpr unsigned long kLongestWideList = 0x100000;

// How often, and after which pause, an update reads a file again that another program is rewriting.
constexpr int kReadings = 10;
constexpr std::chrono::milliseconds kReadingPause(10);

std::optional<std::string_view> optionalView(const char* text) {
    return text == nullptr ? std::nullopt : std::optional<std::string_view>(text);
}

// The wide form of what a read found: lists end in a zero of their own and may fill the buffer.
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

// A failure to open for writing that opening for reading alone may overcome. kReadOnlyFile stands for an error that
// this platform does not have.
bool isRefusal(std::uint16_t number) {
    return number == LibraryMessage::kNotPermitted || number == LibraryMessage::kAccessDenied ||
           number == LibraryMessage::kReadOnlyFile || number == LibraryMessage::kReadOnlyFileSystem;
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

std::uint32_t KvIniFileCache::bosKvIniOpen(const char* name, std::uint32_t flags) {
    openLibraryCatalog();
    const std::uint32_t result = orMemoryError(1U, [&] { return load(name, flags); });
    if (result != 0) {
        closeDescriptor();
        Close();
    }
    return result;
}

std::uint32_t KvIniFileCache::load(const std::string& name, std::uint32_t flags) {
    Close();
    traceIniOpening(name.c_str());
    openFlags_ = flags | kLoadFlags;
    switch (openForLoading(name)) {
        case Opening::kFailed:
            return 1;
        case Opening::kNothingToRead:
            return 0;
        case Opening::kOpened:
            break;
    }
    struct stat status = {};
    if (fstat(descriptor_, &status) != 0) {
        bosMapError(errno, path_.c_str());
        return 1;
    }
    const FileTurn turn(status);
    const std::uint32_t result = readText();
    closeDescriptor();
    if (result == 0) {
        state_ = State::kLoaded;
        traceIniLoaded(path_.c_str(), size_);
    }
    return result;
}

// Opens the file for writing too, or else for reading alone; path_ is what `name` leads to. A driver file that is not
// there is no failure, and its path is kept: its cache can be shared, and loaded later.
//
// The driver file, which most users may only read, is read whatever the failure to open it for writing was. So is every
// file in a thread without an error list: such a caller has never been able to tell a refusal from other failures, and
// relies on reading what can be read. Such a second try creates no file.
KvIniFileCache::Opening KvIniFileCache::openForLoading(const std::string& name) {
    const bool isDriverFile = isDriverFileName(name);
    const bool hasErrorList = mdsGetPerThreadData(kThreadSlotErrorList) != nullptr;
    const bool readAfterAnyFailure = isDriverFile || !hasErrorList;
    int systemError = tryToOpen(name);
    if (systemError != 0 && (readAfterAnyFailure || isRefusal(libraryErrorNumber(systemError)))) {
        openFlags_ &= ~std::uint32_t{OpenFlag::kReadWrite};
        if (readAfterAnyFailure) {
            openFlags_ &= ~std::uint32_t{OpenFlag::kCreateMissing};
        }
        systemError = tryToOpen(name);
    }
    if (systemError == 0) {
        return Opening::kOpened;
    }
    if (!isDriverFile) {
        bosMapErrorAsWarning(systemError, path_.c_str());
        return Opening::kFailed;
    }
    if (!hasErrorList || libraryErrorNumber(systemError) == LibraryMessage::kFileNotFound) {
        return Opening::kNothingToRead;
    }
    bosMapError(systemError, path_.c_str());
    return Opening::kFailed;
}

// 0 with the file open, or the system error number.
int KvIniFileCache::tryToOpen(const std::string& name) {
    char path[kPathSize];
    const bool fits = copyCut(path, sizeof path, name) == name.size();
    const int systemError = fits ? openFile(path, openFlags_, &descriptor_) : ENAMETOOLONG;
    path_ = path;
    return systemError;
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
    if (got != size_) {
        // Another program is rewriting the file, perhaps to the same size in the same second. Without a date and a size
        // the next call reads it again.
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

std::uint32_t KvIniFileCache::sync() {
    std::uint32_t date = 0;
    std::uint64_t size = 0;
    if (bosFileDateSize(path_.c_str(), &date, &size) != 0) {
        return 1;
    }
    if (date == date_ && size == size_) {
        return 0;
    }
    return orMemoryError(1U, [this] { return reload(path_.c_str(), 0); });
}

// After a failure it still is the cache of this file, which the next call tries to read again.
std::uint32_t KvIniFileCache::reload(const char* name, std::uint32_t flags) {
    std::string path = path_;
    const State state = state_;
    const std::uint32_t result = bosKvIniOpen(name, flags);
    if (result != 0) {
        path_ = std::move(path);
        state_ = state;
    }
    return result;
}

bool KvIniFileCache::isCurrent() {
    return state_ == State::kLoaded && sync() == 0 && state_ == State::kLoaded;
}

// Updates what the file holds once it is locked: other programs may have changed it since it was loaded, even in the
// same second and to the same size. Those that take no lock empty it before they write it: an empty file is read twice,
// and one that changes its length is read until it no longer does. The file is not locked in the pauses.
bool KvIniFileCache::rewrite(const char* section, const char* entry, const char* value, IniChange& change) {
    for (int reading = 0; reading <= kReadings; ++reading) {
        LockedIniFile file(path_);
        bool isWhole = false;
        if (!file.open() || !file.read(text_, isWhole)) {
            return false;
        }
        if (isWhole && (!text_.empty() || reading > 0)) {
            const IniUpdate update = updateIniText(text_, section, optionalView(entry), optionalView(value));
            change = update.change;
            return file.replaceText(text_, update.text);
        }
        file.close();
        std::this_thread::sleep_for(kReadingPause);
    }
    bosMapError(EAGAIN, path_.c_str());
    return false;
}

unsigned long KvIniFileCache::bosGetProfileString(const char* section, const char* entry, const char* defaultText,
                                                  char* buffer, unsigned long size) {
    bool found = false;
    return readString(section, entry, defaultText, buffer, size, found);
}

unsigned long KvIniFileCache::readString(const char* section, const char* entry, const char* defaultText, char* buffer,
                                         unsigned long size, bool& found) {
    const ReadCall call = {IniReadTrace("GetProfileString:"), section, entry, defaultText, buffer, size};
    openLibraryCatalog();
    const IniLock hold(lock_);
    call.trace.beginString(path_.c_str(), section, entry);
    return read(call, found);
}

unsigned long KvIniFileCache::bosGetProfileSection(const char* section, char* buffer, unsigned long size) {
    const ReadCall call = {IniReadTrace("GetProfileSection:"), section, nullptr, nullptr, buffer, size};
    openLibraryCatalog();
    const IniLock hold(lock_);
    call.trace.beginSection(path_.c_str(), section);
    bool found = false;
    return read(call, found);
}

unsigned long KvIniFileCache::read(const ReadCall& call, bool& found) {
    call.trace.defaultText(call.defaultText);
    unsigned long length = 0;
    found = isCurrent();
    if (found && call.section == nullptr) {
        length = listIniSections(text_, call.buffer, call.size);
    } else if (found) {
        found = call.entry == nullptr ? copyKeys(call, length) : copyValue(call, length);
    }
    if (!found) {
        length = copyCut(call.buffer, call.size, call.defaultText == nullptr ? "" : call.defaultText);
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
    length = copyCut(call.buffer, call.size, value);
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
                                                   const char16_t* defaultText, char16_t* buffer, unsigned long size) {
    bool found = false;
    const std::u16string text = orMemoryError(std::u16string(), [&] {
        // Room for any value, and for as many bytes as the units asked for can take.
        std::string bytes(kLongestValue + 1 + 3 * std::min(size, kLongestWideList), '\0');
        bytes.resize(readString(Narrow(section).get(), Narrow(entry).get(), Narrow(defaultText).get(), bytes.data(),
                                bytes.size(), found));
        return toUtf16(bytes, kCPLocale);
    });
    // A cut default is not told from a whole one.
    const bool isList = found && (section == nullptr || entry == nullptr);
    const std::size_t longest = found || size == 0 ? std::u16string_view::npos : size - 1;
    return copyWide(std::u16string_view(text).substr(0, longest), isList, buffer, size);
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

int KvIniFileCache::bosPutProfileString(const char* section, const char* entry, const char* value) {
    return orMemoryError(0, [&] {
        openLibraryCatalog();
        const IniLock hold(lock_);
        if (state_ != State::kLoaded || section == nullptr) {
            // Without a path, the failed load told why.
            if (section == nullptr || !path_.empty()) {
                bosMapError(section == nullptr ? EINVAL : ENOENT, path_.c_str());
            }
            return 0;
        }
        traceIniPut(path_.c_str(), section, entry, value);
        if (!isCurrent()) {
            return 0;
        }
        // Whatever comes of it, the next call reads the file again.
        date_ = 0;
        size_ = 0;
        IniChange change = IniChange::kNone;
        if (!rewrite(section, entry, value, change)) {
            return 0;
        }
        traceIniChange(change, section, entry, value);
        sync();
        traceIniRewritten(text_);
        return 1;
    });
}

void KvIniFileCache::closeDescriptor() {
    if (descriptor_ != 0) {
        // What close says changes nothing: the text was read.
        close(descriptor_);
        descriptor_ = 0;
    }
}

void KvIniFileCache::Close() {
    path_.clear();
    text_.clear();
    date_ = 0;
    size_ = 0;
    state_ = State::kNotLoaded;
}

std::uint32_t KvIniFileCache::incrementUseCount() {
    const IniLock hold(lock_);
    return ++useCount_;
}

std::uint32_t KvIniFileCache::decrementUseCount() {
    const IniLock hold(lock_);
    return --useCount_;
}

bool KvIniFileCache::openShared(const char* name, std::uint32_t flags) {
    const IniLock hold(lock_);
    const bool isToCreate = (flags & OpenFlag::kCreateMissing) != 0;
    if ((state_ != State::kLoaded || (isToCreate && bosexist(path_.c_str()) == 0)) && reload(name, flags) == 0) {
        wasOpened_ = true;
    }
    return wasOpened_;
}

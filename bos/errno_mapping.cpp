#include "bos/errno_mapping.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include "catalogs/message_numbers.h"
#include "kvlib/error.h"
#include "kvlib/error_report.h"
#include "kvlib/library_errors.h"
#include "kvlib/library_text.h"
#include "kvlib/out_of_memory.h"
#include "kvlib/per_thread_data.h"

namespace {

struct Mapping {
    int systemError;
    std::uint16_t number;
    bool withName;
};

constexpr Mapping kMappings[] = {
    {EPERM, LibraryMessage::kNotPermitted, true},
    {ENOENT, LibraryMessage::kFileNotFound, true},
    {EIO, LibraryMessage::kFileError, true},
    {EBADF, LibraryMessage::kBadDescriptor, false},
    {EAGAIN, LibraryMessage::kFileBusy, false},
    {ENOMEM, LibraryMessage::kNoMemory, false},
    {EACCES, LibraryMessage::kAccessDenied, true},
    {EEXIST, LibraryMessage::kFileExists, true},
    {EMFILE, LibraryMessage::kTooManyFiles, false},
    {ENOSPC, LibraryMessage::kNoSpace, true},
    {EROFS, LibraryMessage::kReadOnlyFileSystem, true},
    {EDEADLK, LibraryMessage::kLockDeadlock, true},
    {ENOLCK, LibraryMessage::kNoLocks, false},
};

const Mapping* findMapping(int systemError) {
    const auto* found = std::find_if(std::begin(kMappings), std::end(kMappings),
                                     [=](const Mapping& mapping) { return mapping.systemError == systemError; });
    return found == std::end(kMappings) ? nullptr : found;
}

// Fills the format's first "%s" with `first` and its second with `second`. The format comes from a catalog that may
// be anyone's translation, so it never reaches printf: further places and other conversions stay as they are.
std::string fillFormat(std::string_view format, std::string_view first, std::string_view second) {
    std::string result;
    int places = 0;
    for (std::size_t i = 0; i < format.size(); ++i) {
        const std::string_view pair = format.substr(i, 2);
        if (pair == "%s" && places < 2) {
            result += places++ == 0 ? first : second;
            ++i;
        } else {
            result += format[i];
            i += pair == "%%" ? 1 : 0;
        }
    }
    return result;
}

std::string detailText(int systemError, const char* name) {
    const Mapping* mapping = findMapping(systemError);
    if (mapping != nullptr) {
        return mapping->withName && name != nullptr ? name : "";
    }
    std::string reason = std::strerror(systemError);  // NOLINT(concurrency-mt-unsafe): glibc's is per thread
    if (name == nullptr) {
        return reason;
    }
    char format[kLibraryTextSize];
    return fillFormat(winGetString(format, LibraryMessage::kSystemErrorFormat) == 0 ? "%s: %s" : format, reason, name);
}

std::uint16_t record(int systemError, const char* name, bool asWarning) {
    const std::uint16_t number = libraryErrorNumber(systemError);
    if (mdsGetPerThreadData(kThreadSlotErrorList) == nullptr) {
        return number;
    }
    return orMemoryError(number, [=] {
        const std::string detail = detailText(systemError, name);
        KvError* error = asWarning ? addWarning(number) : addError(number);
        if (!detail.empty()) {
            error->appendText(": ");
            error->appendText(detail.c_str());
        }
        return number;
    });
}

}  // namespace

std::uint16_t libraryErrorNumber(int systemError) noexcept {
    const Mapping* mapping = findMapping(systemError);
    return mapping == nullptr ? std::uint16_t{LibraryMessage::kFileError} : mapping->number;
}

std::uint16_t bosMapError(int systemError, const char* name) {
    return record(systemError, name, false);
}

std::uint16_t bosMapErrorAsWarning(int systemError, const char* name) {
    return record(systemError, name, true);
}

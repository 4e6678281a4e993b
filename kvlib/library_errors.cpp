#include "kvlib/library_errors.h"

#include "kvlib/error_keeper.h"
#include "kvlib/library_text.h"

namespace {

// Records an error that the current list allocates; `arguments` are those of allocError after the number.
template <typename... Arguments>
KvError* recordError(std::uint16_t id, Arguments... arguments) {
    KvErrorList* list = KvErrorKeeper::currentList();
    if (list == nullptr) {
        return &DummyError;
    }
    return KvErrorKeeper::addError(list->allocError(id, arguments...));
}

KvError* recordLibraryError(std::uint16_t id, int errorType) {
    char16_t text[kLibraryTextSize];
    winGetString(text, id);
    return recordError(id, static_cast<const char16_t*>(text), errorType, std::uint16_t{0}, std::int64_t{0});
}

}  // namespace

KvError* addError(std::uint16_t id) {
    return recordLibraryError(id, kErrorTypeError);
}

KvError* addError(std::uint16_t id, const char16_t* text) {
    return recordError(id, text, kErrorTypeError, std::uint16_t{0}, std::int64_t{0});
}

KvError* addError(std::uint16_t id, const char* text) {
    return recordError(id, text, kCPLocale, kErrorTypeError, std::uint16_t{0}, std::int64_t{0});
}

KvError* addWarning(std::uint16_t id) {
    return recordLibraryError(id, kErrorTypeWarning);
}

KvError* addDatabaseError(std::uint16_t number, std::int64_t nativeError, const char* text, int errorType,
                          kvCPType codePage) {
    return recordError(number, text, codePage, errorType, std::uint16_t{0}, nativeError);
}

void appendTextToLastError(std::uint16_t id) {
    char16_t text[kLibraryTextSize];
    winGetString(text, id);
    KvErrorKeeper::appendTextToLastError(text);
}

void appendTextToErrorAtPos(std::uint16_t id, std::uint64_t pos) {
    KvErrorList* list = KvErrorKeeper::currentList();
    KvError* error = list == nullptr ? nullptr : list->getNodeAtPos(pos);
    if (error != nullptr) {
        char16_t text[kLibraryTextSize];
        winGetString(text, id);
        error->appendText(text);
    }
}

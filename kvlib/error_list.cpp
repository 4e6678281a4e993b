#include "kvlib/error_list.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <new>

#include "kvlib/catalog.h"

constinit KvError MemoryError{ErrSpecialError::kMemory};
constinit KvError DummyError{ErrSpecialError::kDummy};

namespace {

constexpr const char* kMemoryText = "Out Of Memory";
constexpr const char16_t* kMemoryTextW = u"Out Of Memory";
constexpr std::uint64_t kInitialErrorSlots = 16;

template <typename Char>
std::basic_string_view<Char> viewOrEmpty(const Char* text) {
    return text == nullptr ? std::basic_string_view<Char>() : std::basic_string_view<Char>(text);
}

// The rank of a state by its code alone; smaller sorts first.
int exactRank(std::u16string_view state) {
    if (state == u"08S01") {
        return 0;
    }
    return state == u"01S01" ? 1 : 2;
}

int classRank(std::u16string_view state) {
    std::u16string_view stateClass = state.substr(0, 2);
    return stateClass >= u"03" && stateClass <= u"HZ" ? 0 : 1;
}

int driverManagerRank(std::u16string_view state) {
    return state.starts_with(u"IM") ? 0 : 1;
}

void destroyUnlessStatic(KvError* error) {
    if (error != nullptr && !error->isStatic()) {
        delete error;
    }
}

// The dummy error of the current list, or the shared one.
KvError* currentDummyError() {
    KvErrorList* list = KvErrorKeeper::currentList();
    return list == nullptr ? &DummyError : list->getDummyError();
}

// Records an error that the current list allocates; `arguments` are those of allocError after the number.
template <typename... Arguments>
KvError* recordError(std::uint16_t id, Arguments... arguments) {
    KvErrorList* list = KvErrorKeeper::currentList();
    if (list == nullptr) {
        return &DummyError;
    }
    return KvErrorKeeper::addError(list->allocError(id, arguments...));
}

template <typename Char>
void appendToLast(const Char* text) {
    KvError* error = KvErrorKeeper::getLastError();
    // When memory runs out the memory error takes the place of the error, which is gone then.
    if (error != nullptr && error->appendText(text) == 0) {
        error->setState(nullptr);
    }
}

KvError* recordLibraryError(std::uint16_t id, int errorType) {
    char16_t text[kLibraryTextSize];
    winGetString(text, id);
    return recordError(id, static_cast<const char16_t*>(text), errorType, std::uint16_t{0}, std::int64_t{0});
}

}  // namespace

KvError::KvError(std::uint16_t number, const char* text, kvCPType codePage, int errorType, std::uint16_t stateNumber,
                 std::int64_t nativeError)
    : nativeError_(nativeError), number_(number), stateNumber_(stateNumber), codePage_(codePage) {
    text_.initialize(viewOrEmpty(text), codePage_);
    setErrorType(errorType);
}

KvError::KvError(std::uint16_t number, const char16_t* text, int errorType, std::uint16_t stateNumber,
                 std::int64_t nativeError)
    : nativeError_(nativeError), number_(number), stateNumber_(stateNumber) {
    text_.initialize(viewOrEmpty(text));
    setErrorType(errorType);
}

std::int16_t KvError::compare(const KvObject* other) const {
    const auto& that = static_cast<const KvError&>(*other);
    if (recordPosition_ != that.recordPosition_) {
        return recordPosition_ < that.recordPosition_ ? -1 : 1;
    }
    char16_t buffer[kLibraryTextSize];
    char16_t thatBuffer[kLibraryTextSize];
    std::u16string_view state = orderingState(buffer);
    // A state that the other error was given explicitly does not count: this error's own explicit state stands in for
    // it. The order in which errors come out, which callers have come to expect, rests on that.
    std::u16string_view thatState =
        that.state_[0] != u'\0' ? std::u16string_view(state_) : that.orderingState(thatBuffer);
    for (int (*rank)(std::u16string_view) : {exactRank, classRank, driverManagerRank}) {
        int difference = rank(state) - rank(thatState);
        if (difference != 0) {
            return difference < 0 ? -1 : 1;
        }
    }
    return 0;
}

std::u16string_view KvError::orderingState(char16_t (&buffer)[kLibraryTextSize]) const {
    if (state_[0] != u'\0') {
        return state_;
    }
    if (stateNumber_ != 0) {
        std::uint32_t length = winGetString(buffer, stateNumber_);
        return std::u16string_view(buffer, length).substr(0, kStateLength);
    }
    return isOutOfMemory() ? u"HY001" : u"HY000";
}

void KvError::setErrorType(int errorType) {
    if (!isStatic()) {
        flags_ = static_cast<std::uint8_t>(errorType == kErrorTypeWarning ? flags_ | kWarning : flags_ & ~kWarning);
    }
}

void KvError::setState(const char16_t* state) {
    if (!isStatic()) {
        std::u16string_view given = viewOrEmpty(state).substr(0, kStateLength);
        *std::copy(given.begin(), given.end(), state_) = u'\0';
    }
}

void KvError::setPositions(std::int64_t recordPosition, std::int64_t secondPosition) {
    if (!isStatic()) {
        recordPosition_ = recordPosition;
        secondPosition_ = secondPosition;
    }
}

const char* KvError::getErrorText() const {
    if (isOutOfMemory()) {
        return kMemoryText;
    }
    if (text_.isEmpty()) {
        return "";
    }
    text8_.unInitialize();
    try {
        if (text8_.initialize(fromUtf16(text_.view(), codePage_).c_str()) == 0) {
            return text8_.data();
        }
    } catch (const std::bad_alloc&) {
        ramAddMemoryError();
    }
    return kMemoryText;
}

const char16_t* KvError::getErrorTextW() const {
    return isOutOfMemory() ? kMemoryTextW : text_.text();
}

int KvError::appendText(const char* text) {
    return isStatic() ? 0 : text_.concat(viewOrEmpty(text), codePage_);
}

int KvError::appendText(const char16_t* text) {
    return isStatic() ? 0 : text_.concat(viewOrEmpty(text));
}

KvError& KvError::fillPlace(std::u16string_view value) {
    return isStatic() || text_.setParam(value) == 0 ? *this : *currentDummyError();
}

KvError& KvError::fillPlace(std::string_view value) {
    return isStatic() || text_.setParam(value, codePage_) == 0 ? *this : *currentDummyError();
}

KvError& KvError::operator<<(const char16_t* value) {
    return fillPlace(viewOrEmpty(value));
}

KvError& KvError::operator<<(const char* value) {
    return fillPlace(viewOrEmpty(value));
}

KvError& KvError::operator<<(unsigned long value) {
    char digits[24];
    return fillPlace(std::string_view(digits, std::to_chars(digits, std::end(digits), value).ptr));
}

KvError& KvError::operator<<(long value) {
    char digits[24];
    return fillPlace(std::string_view(digits, std::to_chars(digits, std::end(digits), value).ptr));
}

KvError& KvError::operator<<(const KvSubString& value) {
    return fillPlace(value.view());
}

KvError& KvError::operator<<(const KvSubStringW& value) {
    return fillPlace(value.view());
}

KvErrorList::KvErrorList(void* owner, unsigned flags) : owner_(owner), keepAll_((flags & kErrorListKeepAll) != 0) {
    setFlag(kArrayOwnsElements, true);
    setInitialSize(kInitialErrorSlots);
}

KvErrorList::~KvErrorList() {
    memoryErrorPending_ = false;
    // Here and not in the array: it would delete static elements as well.
    while (count() != 0) {
        destroyUnlessStatic(element(count() - 1));
        removeAtIndex(count() - 1);
    }
}

KvError* KvErrorList::getMemoryError() {
    return &MemoryError;
}

KvError* KvErrorList::getDummyError() {
    return &DummyError;
}

KvError* KvErrorList::allocError(std::uint16_t number, const char16_t* text, int errorType, std::uint16_t stateNumber,
                                 std::int64_t nativeError) {
    auto* error = new (std::nothrow) KvError(number, text, errorType, stateNumber, nativeError);
    if (error == nullptr) {
        ramAddMemoryError();
    }
    return error;
}

KvError* KvErrorList::allocError(std::uint16_t number, const char* text, kvCPType codePage, int errorType,
                                 std::uint16_t stateNumber, std::int64_t nativeError) {
    auto* error = new (std::nothrow) KvError(number, text, codePage, errorType, stateNumber, nativeError);
    if (error == nullptr) {
        ramAddMemoryError();
    }
    return error;
}

KvError* KvErrorList::element(std::uint64_t index) const {
    return static_cast<KvError*>(at(index));
}

KvError* KvErrorList::takePendingMemoryError() {
    if (!memoryErrorPending_) {
        return nullptr;
    }
    memoryErrorPending_ = false;
    return getMemoryError();
}

KvError* KvErrorList::getLastError() {
    if (memoryErrorPending_) {
        return getMemoryError();
    }
    return count() == 0 ? nullptr : element(count() - 1);
}

KvError* KvErrorList::removeFirstError() {
    KvError* error = takePendingMemoryError();
    if (error == nullptr) {
        error = element(0);
        removeAtIndex(0);
    }
    return error;
}

KvError* KvErrorList::removeLastError() {
    KvError* error = takePendingMemoryError();
    if (error == nullptr && count() != 0) {
        error = element(count() - 1);
        removeAtIndex(count() - 1);
    }
    return error;
}

int KvErrorList::getErrorsMix() const {
    bool errors = false;
    bool warnings = false;
    for (std::uint64_t i = 0; i < count(); i++) {
        (element(i)->isWarning() ? warnings : errors) = true;
    }
    if (errors) {
        return warnings ? 1 : 2;
    }
    return warnings ? 3 : 0;
}

int KvErrorList::isWarningOnly() const {
    return getErrorsMix() == 3 ? 1 : 0;
}

int KvErrorList::isExistingError() const {
    int mix = getErrorsMix();
    return mix == 1 || mix == 2 ? 1 : 0;
}

int KvErrorList::concatErrors(KvString& string, char separator) const {
    for (std::uint64_t i = 0; i < count(); i++) {
        if (i != 0 && string.concat(KvSubString(&separator, 1)) != 0) {
            return 1;
        }
        if (string.concat(element(i)->getErrorText()) != 0) {
            return 1;
        }
    }
    return 0;
}

void KvErrorList::setWarningAfterPos(std::int64_t pos) {
    for (std::uint64_t i = pos < 0 ? 0 : static_cast<std::uint64_t>(pos) + 1; i < count(); i++) {
        element(i)->setErrorType(kErrorTypeWarning);
    }
}

void KvErrorList::appendTextStartingAtPos(const char* text, std::uint64_t pos) {
    for (; pos < count(); pos++) {
        element(pos)->appendText(text);
    }
}

void KvErrorList::appendTextStartingAtPos(const char16_t* text, std::uint64_t pos) {
    for (; pos < count(); pos++) {
        element(pos)->appendText(text);
    }
}

void KvErrorList::moveLastErrorToPos(std::uint64_t pos) {
    if (pos < count()) {
        std::rotate(items() + pos, items() + count() - 1, items() + count());
    }
}

KvError* KvErrorList::getFirstNode() {
    iteration_ = 0;
    return getNextNode();
}

KvError* KvErrorList::getNextNode() {
    return iteration_ < count() ? element(iteration_++) : nullptr;
}

KvError* KvErrorList::getNodeAtPos(std::uint64_t pos) const {
    return element(pos);
}

void KvErrorList::install(void** slot) {
    previous_ = static_cast<KvErrorList*>(*slot);
    slot_ = slot;
    *slot = this;
}

void KvErrorList::uninstall() {
    *slot_ = previous_;
    previous_ = nullptr;
    slot_ = nullptr;
}

KvErrorList* KvErrorKeeper::currentList() {
    return static_cast<KvErrorList*>(mdsGetPerThreadData(kThreadSlotErrorList));
}

void KvErrorKeeper::setErrorList(KvErrorList* list) {
    mdsPerThreadInit();
    void** slot = mdsGetPerThreadDataAddress(kThreadSlotErrorList);
    if (list != nullptr && slot != nullptr) {
        list->install(slot);
    }
}

void KvErrorKeeper::setErrorList(KvErrorList* list, KvThreadInfo* record) {
    if (list != nullptr) {
        list->install(&record->slots[kThreadSlotErrorList]);
    }
}

KvErrorList* KvErrorKeeper::giveUpErrorList() {
    KvErrorList* list = currentList();
    if (list != nullptr) {
        list->uninstall();
    }
    mdsPerThreadTerm();
    return list;
}

KvErrorList* KvErrorKeeper::giveUpErrorList(KvThreadInfo* record) {
    auto* list = static_cast<KvErrorList*>(record->slots[kThreadSlotErrorList]);
    if (list != nullptr) {
        list->uninstall();
    }
    return list;
}

KvError* KvErrorKeeper::addError(KvError* error) {
    KvErrorList* list = currentList();
    if (list == nullptr) {
        destroyUnlessStatic(error);
        return &DummyError;
    }
    if (error == nullptr) {
        return list->getDummyError();
    }
    bool wanted = list->keepAll_ || list->isExistingError() == 0;
    if (!wanted || list->add(error) != 0) {
        destroyUnlessStatic(error);
        return list->getDummyError();
    }
    return error;
}

void KvErrorKeeper::addMemoryError() {
    KvErrorList* list = currentList();
    if (list == nullptr) {
        return;
    }
    if (!list->keepAll_ && list->isExistingError() != 0) {
        clearLastError();
    }
    list->memoryErrorPending_ = true;
}

KvError* KvErrorKeeper::getLastError() {
    KvErrorList* list = currentList();
    return list == nullptr ? nullptr : list->getLastError();
}

std::uint16_t KvErrorKeeper::getLastErrorNumber() {
    const KvError* error = getLastError();
    return error == nullptr ? std::uint16_t{0} : error->number();
}

std::int64_t KvErrorKeeper::getLastNativeError() {
    const KvError* error = getLastError();
    return error == nullptr ? 0 : error->nativeError();
}

void KvErrorKeeper::setLastErrorType(int errorType) {
    KvError* error = getLastError();
    if (error != nullptr) {
        error->setErrorType(errorType);
    }
}

void KvErrorKeeper::appendTextToLastError(const char* text) {
    appendToLast(text);
}

void KvErrorKeeper::appendTextToLastError(const char16_t* text) {
    appendToLast(text);
}

void KvErrorKeeper::clearLastError() {
    KvErrorList* list = currentList();
    if (list != nullptr) {
        destroyUnlessStatic(list->removeLastError());
    }
}

void* KvErrorKeeper::getOwnerOfList() {
    const KvErrorList* list = currentList();
    return list == nullptr ? nullptr : list->owner_;
}

std::uint32_t winGetString(char* buffer, std::uint32_t id) {
    openLibraryCatalog();
    std::int32_t length = LoadString(nullptr, id, buffer, kLibraryTextSize);
    // The lookup gives the number itself for a text that is missing.
    char digits[16];
    std::string_view number(digits, std::to_chars(digits, std::end(digits), static_cast<std::int32_t>(id)).ptr);
    if (length < 1 || number == buffer) {
        buffer[0] = '\0';
        return 0;
    }
    return static_cast<std::uint32_t>(length);
}

std::uint32_t winGetString(char16_t* buffer, std::uint32_t id) {
    char text[kLibraryTextSize];
    std::int32_t length = winGetString(text, id) == 0 ? 0 : LoadStringW(nullptr, id, buffer, kLibraryTextSize);
    if (length < 1) {
        buffer[0] = u'\0';
        return 0;
    }
    return static_cast<std::uint32_t>(length);
}

void ramAddMemoryError() {
    KvErrorKeeper::addMemoryError();
}

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

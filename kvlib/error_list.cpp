#include "kvlib/error_list.h"

#include <algorithm>
#include <new>

#include "kvlib/error_report.h"

namespace {
constexpr std::uint64_t kInitialErrorSlots = 16;
}  // namespace

KvErrorList::KvErrorList(void* owner, unsigned flags)
    : owner_(owner), flags_(static_cast<std::uint8_t>(flags & kErrorListKeepAll)) {
    setFlag(kArrayOwnsElements, true);
    setInitialSize(kInitialErrorSlots);
}

KvErrorList::~KvErrorList() {
    setMemoryErrorPending(false);
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

void KvErrorList::setMemoryErrorPending(bool on) noexcept {
    flags_ = static_cast<std::uint8_t>(on ? flags_ | kMemoryErrorPending : flags_ & ~kMemoryErrorPending);
}

KvError* KvErrorList::element(std::uint64_t index) const {
    return static_cast<KvError*>(at(index));
}

KvError* KvErrorList::takePendingMemoryError() {
    if (!isMemoryErrorPending()) {
        return nullptr;
    }
    setMemoryErrorPending(false);
    return getMemoryError();
}

KvError* KvErrorList::getLastError() {
    if (isMemoryErrorPending()) {
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

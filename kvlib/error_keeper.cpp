#include "kvlib/error_keeper.h"

#include "kvlib/error_report.h"

namespace {

template <typename Char>
void appendToLast(const Char* text) {
    KvError* error = KvErrorKeeper::getLastError();
    // When memory runs out the memory error takes the place of the error, which is gone then.
    if (error != nullptr && error->appendText(text) == 0) {
        error->setState(nullptr);
    }
}

}  // namespace

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
    bool wanted = list->keepsAll() || list->isExistingError() == 0;
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
    if (!list->keepsAll() && list->isExistingError() != 0) {
        clearLastError();
    }
    list->setMemoryErrorPending(true);
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

void ramAddMemoryError() noexcept {
    KvErrorKeeper::addMemoryError();
}

KvError* currentDummyError() {
    KvErrorList* list = KvErrorKeeper::currentList();
    return list == nullptr ? &DummyError : list->getDummyError();
}

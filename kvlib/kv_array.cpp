#include "kvlib/kv_array.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "kvlib/error_report.h"

namespace {

constexpr std::size_t kSlotSize = sizeof(void*);
constexpr std::uint64_t kMaxSlots = PTRDIFF_MAX / kSlotSize;
constexpr std::uint64_t kMaxInitialSlots = 65535;

// `n` empty slots (one byte when there are none, so that null always means failure); null after recording a memory
// error.
KvObject** allocateSlots(std::uint64_t n) {
    void* slots = nullptr;
    if (n <= kMaxSlots) {
        slots = n == 0 ? std::malloc(1) : std::calloc(n, kSlotSize);
    }
    if (slots == nullptr) {
        ramAddMemoryError();
    }
    return static_cast<KvObject**>(slots);
}

// Compares as `compare` does; an empty slot sorts before everything.
int order(const KvObject* a, const KvObject* b) {
    if (a == nullptr || b == nullptr) {
        return static_cast<int>(a != nullptr) - static_cast<int>(b != nullptr);
    }
    return a->compare(b);
}

}  // namespace

KvArray::~KvArray() {
    if (hasFlag(kArrayOwnsElements)) {
        deleteContents();
    }
    if (hasFlag(kArrayOwnsSlots)) {
        std::free(items_);
    }
}

void KvArray::setFlag(KvArrayFlag flag, bool on) {
    flags_ = static_cast<std::uint8_t>(on ? flags_ | flag : flags_ & ~flag);
}

int KvArray::setInitialSize(std::uint64_t n) {
    if (n > kMaxInitialSlots) {
        ramAddMemoryError();
        return 1;
    }
    KvObject** slots = allocateSlots(n);
    if (slots == nullptr) {
        return 1;
    }
    items_ = slots;
    capacity_ = n;
    count_ = 0;
    setFlag(kArrayOwnsSlots, true);
    return 0;
}

int KvArray::addAtIndex(KvObject* object, std::uint64_t index) {
    if (count_ == capacity_ && increaseSize(increment_, true) != 0) {
        return 1;
    }
    index = std::min(index, count_);
    std::copy_backward(items_ + index, items_ + count_, items_ + count_ + 1);
    items_[index] = object;
    count_++;
    return 0;
}

void KvArray::removeAtIndex(std::uint64_t index) {
    if (index >= count_) {
        return;
    }
    std::copy(items_ + index + 1, items_ + count_, items_ + index);
    count_--;
    // Whoever destroys the contents of all slots must not destroy an element twice.
    items_[count_] = nullptr;
}

void KvArray::deleteAtIndex(std::uint64_t index) {
    delete at(index);
    removeAtIndex(index);
}

void KvArray::deleteContents() {
    std::uint64_t end = hasFlag(kArrayWholeCapacity) ? capacity_ : count_;
    for (std::uint64_t i = 0; i < end; i++) {
        delete items_[i];
        items_[i] = nullptr;
    }
    count_ = 0;
}

int KvArray::increaseSize(std::uint64_t by, bool preserve, int /*ignored*/) {
    std::uint64_t added = by == 0 ? capacity_ : by;
    if (added == 0) {
        // An empty array that grows by doubling would never get its first slot.
        added = 1;
    }
    if (added > kMaxSlots - capacity_) {
        ramAddMemoryError();
        return 1;
    }
    KvObject** slots = allocateSlots(capacity_ + added);
    if (slots == nullptr) {
        return 1;
    }
    if (preserve && items_ != nullptr) {
        std::copy(items_, items_ + capacity_, slots);
    }
    if (hasFlag(kArrayOwnsSlots)) {
        std::free(items_);
    }
    items_ = slots;
    capacity_ += added;
    setFlag(kArrayOwnsSlots, true);
    return 0;
}

int KvArray::shrink(std::uint64_t n) {
    n = std::min(n, capacity_);
    if (hasFlag(kArrayOwnsSlots)) {
        if (n == 0) {
            std::free(items_);
            items_ = nullptr;
        } else {
            auto** slots = static_cast<KvObject**>(std::realloc(items_, n * kSlotSize));
            if (slots == nullptr) {
                ramAddMemoryError();
                return 1;
            }
            items_ = slots;
        }
    }
    capacity_ = n;
    count_ = n;
    return 0;
}

bool KvArray::doesExist(const KvObject* object) const {
    return std::find(items_, items_ + count_, object) != items_ + count_;
}

int KvSortedArray::add(KvObject* object) {
    std::uint64_t index = count();
    if (count() != 0 && !hasFlag(kArrayInsertionOrder) && !hasFlag(kArrayInsertionOrder2) &&
        findIndexOf(object, index) != 0) {
        index = findIndexOfLastKey(object, index) + 1;
    }
    return addAtIndex(object, index);
}

int KvSortedArray::findIndexOf(const KvObject* key, std::uint64_t& index) const {
    index = 0;
    if (count() == 0 || order(key, at(0)) < 0) {
        return 0;
    }
    // `high` is one past the last candidate, so that it can't fall below 0; the key is not before the first element.
    std::uint64_t low = 0;
    std::uint64_t high = count();
    while (low < high) {
        std::uint64_t middle = (low + high - 1) / 2;
        int result = order(key, at(middle));
        if (result == 0) {
            index = middle;
            return 1;
        }
        if (result < 0) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    index = low;
    return 0;
}

std::uint64_t KvSortedArray::findIndexOfLastKey(const KvObject* key, std::uint64_t index) const {
    while (index + 1 < count() && order(key, at(index + 1)) == 0) {
        index++;
    }
    return index;
}

int KvSortedArray::seqFindIndexOf(const KvObject* key, std::uint64_t& index) const {
    for (index = 0; index < count(); index++) {
        if (order(key, at(index)) == 0) {
            return 1;
        }
    }
    return 0;
}

std::uint64_t KvSortedArray::deleteDuplicates() {
    return takeOutDuplicates(true);
}

std::uint64_t KvSortedArray::removeDuplicates() {
    return takeOutDuplicates(false);
}

std::uint64_t KvSortedArray::takeOutDuplicates(bool destroy) {
    std::uint64_t taken = 0;
    for (std::uint64_t i = 1; i < count();) {
        std::uint64_t earlier = 0;
        seqFindIndexOf(at(i), earlier);
        if (earlier >= i) {
            i++;
            continue;
        }
        KvObject* duplicate = at(i);
        removeAtIndex(i);
        // The same object added twice stays with its other place.
        if (destroy && !doesExist(duplicate)) {
            delete duplicate;
        }
        taken++;
    }
    return taken;
}

void KvSortedArray::realResort() {
    std::stable_sort(items(), items() + count(), [](const KvObject* a, const KvObject* b) { return order(a, b) < 0; });
}

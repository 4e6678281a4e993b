// Growable arrays of object pointers. No array is locked: it belongs to one thread at a time, or its user locks.
#pragma once

#include <cstdint>

#include "kvlib/kv_object.h"

// What an array does with its elements and its slots; values of one flag byte.
enum KvArrayFlag : std::uint8_t {
    kArrayOwnsElements = 0x01,     // Destroying the array destroys its elements.
    kArrayWholeCapacity = 0x02,    // deleteContents visits all slots, not only those in use.
    kArrayOwnsSlots = 0x04,        // The array frees its slot buffer; set by whatever allocates one.
    kArrayInsertionOrder = 0x08,   // A sorted array appends instead of sorting in.
    kArrayInsertionOrder2 = 0x10,  // The same, on behalf of another user of the array.
};

class KvArray : public KvObject {
public:
    KvArray() = default;
    // Destroys the elements and frees the slots as far as they are owned.
    ~KvArray() override;

    std::uint64_t count() const noexcept { return count_; }
    std::uint64_t capacity() const noexcept { return capacity_; }
    // The slots, null until the first growth; valid until the array grows or shrinks.
    KvObject** items() const noexcept { return items_; }
    // The element at `index`, or null beyond the last one.
    KvObject* at(std::uint64_t index) const noexcept { return index < count_ ? items_[index] : nullptr; }

    bool hasFlag(KvArrayFlag flag) const noexcept { return (flags_ & flag) != 0; }
    void setFlag(KvArrayFlag flag, bool on);
    // Slots added when a full array grows, 16 at first; 0 means to double.
    void setGrowthIncrement(std::uint64_t slots) { increment_ = slots; }

    // Gives the array a new buffer of `n` empty slots. An earlier buffer is not freed, and the elements counted so far
    // are dropped: call it on a new array. At most 65,535 slots, a limit that callers' 16-bit counts rely on.
    // Returns 0, or 1 after recording a memory error, and then nothing has changed.
    int setInitialSize(std::uint64_t n);

    // Inserts `object` before the element at `index`, at the end when `index` lies beyond it.
    // Returns 0, or 1 after recording a memory error; the caller still owns `object` then.
    int addAtIndex(KvObject* object, std::uint64_t index);

    // Takes the element at `index` out without destroying it; deleteAtIndex destroys it. Nothing beyond the last one.
    void removeAtIndex(std::uint64_t index);
    void deleteAtIndex(std::uint64_t index);

    // Destroys all elements, whoever owns them, and empties the array; it keeps its slots.
    void deleteContents();

    // Adds `by` slots, or doubles their number when `by` is 0. Without `preserve` all slots are empty afterwards, those
    // in use as well. `ignored` has no effect. Returns 0, or 1 after recording a memory error; then nothing has
    // changed.
    int increaseSize(std::uint64_t by, bool preserve, int ignored = 0);

    // Makes both capacity and count `n`, at most the present capacity; elements beyond are dropped, not destroyed, and
    // slots that were unused are null elements then. A buffer that is not owned is left as it is.
    // Returns 0, or 1 after recording a memory error, and then nothing has changed.
    int shrink(std::uint64_t n);

    // True when `object` itself is in the array.
    bool doesExist(const KvObject* object) const;

private:
    KvObject** items_ = nullptr;
    std::uint64_t capacity_ = 0;
    std::uint64_t count_ = 0;
    std::uint64_t increment_ = 16;
    std::uint8_t flags_ = 0;
};

// An array kept in the order of its elements' `compare`. Equal elements keep the order in which they were added.
class KvSortedArray : public KvArray {
public:
    // Adds `object` where it belongs, or at the end when an insertion-order flag is set. Returns as addAtIndex does.
    int add(KvObject* object);

    // Returns 1 and the index of an element equal to `key`, or 0 and the index where `key` belongs. Needs key order.
    int findIndexOf(const KvObject* key, std::uint64_t& index) const;

    // The last index from `index` on whose element equals `key`, when the one at `index` does. Needs key order.
    std::uint64_t findIndexOfLastKey(const KvObject* key, std::uint64_t index) const;

    // Returns 1 and the first index of an element equal to `key`, or 0 and the count. Works in any order.
    int seqFindIndexOf(const KvObject* key, std::uint64_t& index) const;

    // Keep the first of all elements that are equal, wherever they stand, and take the others out; deleteDuplicates
    // destroys them. Return how many were taken out.
    std::uint64_t deleteDuplicates();
    std::uint64_t removeDuplicates();

    // Sorts the array anew by `compare`, after elements were changed or added in insertion order. Equal elements keep
    // their order.
    void realResort();

private:
    std::uint64_t takeOutDuplicates(bool destroy);
};

#include "kvlib/per_thread_data.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <mutex>
#include <new>

#include "kvlib/critical_section.h"

namespace {

// Both are constant-initialised: constructors of static objects of other files come here.
constinit KvCriticalSection PerThreadLock;
constinit std::atomic<void*> TaskSlots[kPerTaskSlots] = {};

KvThreadInfo* firstRecord() {
    return static_cast<KvThreadInfo*>(mdsGetPerTaskData(kTaskSlotThreadRecords));
}

// The calling thread's record, or null. Needs the lock.
KvThreadInfo* findRecord() {
    const unsigned long self = bosGetThreadID();
    for (KvThreadInfo* record = firstRecord(); record != nullptr; record = record->next) {
        if (record->useCount != 0 && record->threadId == self) {
            return record;
        }
    }
    return nullptr;
}

// A record that no thread uses, or null when memory ran out. Needs the lock.
KvThreadInfo* obtainRecord() {
    KvThreadInfo* head = firstRecord();
    if (head == nullptr) {
        head = new (std::nothrow) KvThreadInfo;
        mdsSetPerTaskData(kTaskSlotThreadRecords, head);
        return head;
    }
    if (head->useCount == 0) {
        return head;
    }
    // The walk stops before the last record, which is thus never taken unless it is the head: the last one is where new
    // records are hung on, and it keeps what its thread left there until another record follows it.
    KvThreadInfo* record = head;
    for (; record->next != nullptr; record = record->next) {
        if (record->useCount == 0) {
            return record;
        }
    }
    record->next = new (std::nothrow) KvThreadInfo;
    return record->next;
}

}  // namespace

unsigned long bosGetThreadID() noexcept {
    return pthread_self();
}

int mdsPerThreadInit() noexcept {
    std::lock_guard guard(PerThreadLock);
    KvThreadInfo* record = findRecord();
    if (record != nullptr) {
        record->useCount++;
        return 1;
    }
    record = obtainRecord();
    if (record == nullptr) {
        return 0;
    }
    std::fill(std::begin(record->slots), std::end(record->slots), nullptr);
    record->threadId = bosGetThreadID();
    record->useCount = 1;
    return 1;
}

void mdsPerThreadTerm() noexcept {
    std::lock_guard guard(PerThreadLock);
    KvThreadInfo* record = findRecord();
    if (record != nullptr) {
        record->useCount--;
    }
}

void* mdsGetPerThreadData(unsigned n) noexcept {
    void** slot = mdsGetPerThreadDataAddress(n);
    return slot == nullptr ? nullptr : *slot;
}

void mdsSetPerThreadData(unsigned n, void* value) noexcept {
    void** slot = mdsGetPerThreadDataAddress(n);
    if (slot != nullptr) {
        *slot = value;
    }
}

void** mdsGetPerThreadDataAddress(unsigned n) noexcept {
    if (n >= kPerThreadSlots) {
        return nullptr;
    }
    std::lock_guard guard(PerThreadLock);
    KvThreadInfo* record = findRecord();
    return record == nullptr ? nullptr : &record->slots[n];
}

void mdsSetPerThreadLocking(bool on) noexcept {
    PerThreadLock.setLocking(on);
}

int mdsPerTaskInit() noexcept {
    return 1;
}

void mdsPerTaskTerm() noexcept {}

int mdsIsTaskInit() noexcept {
    return 1;
}

void* mdsGetPerTaskData(unsigned n) noexcept {
    return n < kPerTaskSlots ? TaskSlots[n].load() : nullptr;
}

void mdsSetPerTaskData(unsigned n, void* value) noexcept {
    if (n < kPerTaskSlots) {
        TaskSlots[n].store(value);
    }
}

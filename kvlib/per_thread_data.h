// A small store of pointers per thread and one per process. Threads that use the per-thread slots announce themselves
// with mdsPerThreadInit and leave with mdsPerThreadTerm. All functions may be called from any thread, and from
// constructors of static objects; slot numbers out of range read as null and are ignored when set.
#pragma once

#include <cstdint>

inline constexpr unsigned kPerThreadSlots = 6;
inline constexpr unsigned kPerTaskSlots = 16;

// Who uses which slot.
inline constexpr unsigned kThreadSlotErrorList = 0;
inline constexpr unsigned kTaskSlotIniFiles = 12;
inline constexpr unsigned kTaskSlotThreadRecords = 13;

// What is kept of one thread. Records live until the process ends; one with a use count of 0 is free for any thread.
struct KvThreadInfo {
    KvThreadInfo* next = nullptr;
    unsigned long threadId = 0;
    void* slots[kPerThreadSlots] = {};
    std::uint32_t useCount = 0;
};

// The calling thread's id (POSIX pthread_self), unique among the threads that are running.
unsigned long bosGetThreadID() noexcept;

// Gives the calling thread a record with empty slots, or counts one more use of the one it has. Returns 1, or 0 when
// memory ran out.
int mdsPerThreadInit() noexcept;

// Takes back one mdsPerThreadInit of the calling thread; the last one frees its record for other threads. Does
// nothing for a thread without a record.
void mdsPerThreadTerm() noexcept;

// The value of slot `n` of the calling thread; null when the thread has no record.
void* mdsGetPerThreadData(unsigned n) noexcept;

// Stores `value` in slot `n` of the calling thread; does nothing when the thread has no record. The caller keeps
// owning what the value points to.
void mdsSetPerThreadData(unsigned n, void* value) noexcept;

// The address of slot `n` of the calling thread, or null without a record. Valid until the thread's last
// mdsPerThreadTerm; to be read and written by that thread alone.
void** mdsGetPerThreadDataAddress(unsigned n) noexcept;

// Switches the lock of the per-thread store off or on for the whole process; only for programs with a single thread.
void mdsSetPerThreadLocking(bool on) noexcept;

// The per-task store is a static array: it always exists, so these have nothing to do. mdsPerTaskInit and
// mdsIsTaskInit return 1.
int mdsPerTaskInit() noexcept;
void mdsPerTaskTerm() noexcept;
int mdsIsTaskInit() noexcept;

// One slot of the process-wide store. Each read and each write is atomic; whoever must create a value only once holds
// a lock of its own around both.
void* mdsGetPerTaskData(unsigned n) noexcept;
void mdsSetPerTaskData(unsigned n, void* value) noexcept;

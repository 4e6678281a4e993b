// The two locks of the support library. Both can be static objects that other static objects use while they are
// constructed (their constructors run at compile time), and both work with std::lock_guard.
#pragma once

#include <pthread.h>

#include <atomic>
#include <mutex>

// A recursive mutex (POSIX pthread_mutex_lock, PTHREAD_MUTEX_RECURSIVE): the thread that holds it may lock it again
// and must unlock it as often.
class KvCriticalSection {
public:
    constexpr KvCriticalSection() = default;
    ~KvCriticalSection();
    KvCriticalSection(const KvCriticalSection&) = delete;
    KvCriticalSection& operator=(const KvCriticalSection&) = delete;

    void lock() noexcept;
    void unlock() noexcept;

    // Switches locking off or on again for the whole process: while off, lock and unlock do nothing. For programs
    // with a single thread; change it only while no thread holds the section.
    void setLocking(bool on) noexcept;
    bool isLocking() const noexcept;

private:
    pthread_mutex_t mutex_ = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
    std::atomic<bool> locking_ = true;
};

// A semaphore of one, used as a lock. Not recursive: the thread that holds it must not lock it again.
class KvSemaphore {
public:
    constexpr KvSemaphore() = default;
    KvSemaphore(const KvSemaphore&) = delete;
    KvSemaphore& operator=(const KvSemaphore&) = delete;

    void lock() { mutex_.lock(); }
    bool try_lock() { return mutex_.try_lock(); }
    void unlock() noexcept { mutex_.unlock(); }

private:
    std::mutex mutex_;
};

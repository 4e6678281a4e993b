#include "kvlib/critical_section.h"

KvCriticalSection::~KvCriticalSection() {
    pthread_mutex_destroy(&mutex_);
}

void KvCriticalSection::lock() noexcept {
    if (locking_) {
        pthread_mutex_lock(&mutex_);
    }
}

void KvCriticalSection::unlock() noexcept {
    if (locking_) {
        pthread_mutex_unlock(&mutex_);
    }
}

void KvCriticalSection::setLocking(bool on) noexcept {
    locking_ = on;
}

bool KvCriticalSection::isLocking() const noexcept {
    return locking_;
}

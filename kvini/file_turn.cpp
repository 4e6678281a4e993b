#include "kvini/file_turn.h"

#include <pthread.h>

namespace {

// All are constant-initialised: constructors of static objects read INI files. Nothing is allocated, so nothing fails.
constinit pthread_mutex_t TurnsLock = PTHREAD_MUTEX_INITIALIZER;
constinit pthread_cond_t TurnEnded = PTHREAD_COND_INITIALIZER;
constinit FileTurn* Turns = nullptr;

}  // namespace

FileTurn::FileTurn(const struct stat& file) noexcept : device_(file.st_dev), inode_(file.st_ino) {
    const auto isTaken = [&file] {
        const FileTurn* turn = Turns;
        while (turn != nullptr && !turn->isWith(file)) {
            turn = turn->next_;
        }
        return turn != nullptr;
    };
    pthread_mutex_lock(&TurnsLock);
    while (isTaken()) {
        pthread_cond_wait(&TurnEnded, &TurnsLock);
    }
    next_ = Turns;
    Turns = this;
    pthread_mutex_unlock(&TurnsLock);
}

FileTurn::~FileTurn() {
    pthread_mutex_lock(&TurnsLock);
    FileTurn** link = &Turns;
    while (*link != this) {
        link = &(*link)->next_;
    }
    *link = next_;
    pthread_cond_broadcast(&TurnEnded);
    pthread_mutex_unlock(&TurnsLock);
}

bool FileTurn::isWith(const struct stat& file) const noexcept {
    return device_ == file.st_dev && inode_ == file.st_ino;
}

// Faults between the steps of an operation. The linker leads the file calls of our own code through here (--wrap).
#pragma once

#include <atomic>
#include <cerrno>
#include <functional>

enum class Fault { kFailsWithoutMemory, kActsAndFails, kIsClosed, kDiskIsGone, kKilled, kFileEnds, kMemoryEnds };

// While it lives, the file call number `step` (from 0) meets the fault: it fails with `systemError`, and there is no
// memory left to tell it, or it did its work all the same, if it has a descriptor; or it finds its descriptor closed;
// or it fails after its work, and all after it but unlink fail too; or the process is killed before it. With
// kFileEnds, read number `step` and all after it find the end of the file; with kMemoryEnds, allocation number `step`
// throws. Every write ends after a few bytes. For one thread at a time. The text of EDQUOT is too long for a string
// without an allocation.
class SystemFault {
public:
    SystemFault(Fault kind, int step, int systemError = EDQUOT) : fault(kind), error(systemError), stepsLeft(step) {
        active = this;
    }
    ~SystemFault() { active = nullptr; }
    SystemFault(const SystemFault&) = delete;
    SystemFault& operator=(const SystemFault&) = delete;

    // Whether there were enough calls.
    bool happened() const { return stepsLeft < 0; }

    const Fault fault;
    const int error;
    int stepsLeft;
    static inline SystemFault* active = nullptr;
};

// How often something was brought to the disk.
inline std::atomic<int> syncs = 0;

// What another program does in the next pause that our own code makes, and while it brings a file to the disk.
inline std::function<void()> inThePause;
inline std::function<void()> inTheSync;

// Faults between the steps of an operation. The linker leads the file calls of our own code through here (--wrap).
#pragma once

enum class Fault { kFails, kFailsWithoutMemory, kDescriptorIsClosed, kDiskIsGone, kKilled, kFileEnds, kMemoryEnds };

// While it lives, the file call number `step` (from 0) meets the fault: it fails with EDQUOT, and there may be no
// memory left to tell it; or it finds its descriptor closed; or it and all after it but unlink fail; or the process is
// killed before it; or, a read, it finds the end of the file. With kMemoryEnds, allocation number `step` throws. Every
// write ends after a few bytes. For one thread at a time.
class SystemFault {
public:
    SystemFault(Fault kind, int step);
    ~SystemFault();
    SystemFault(const SystemFault&) = delete;
    SystemFault& operator=(const SystemFault&) = delete;

    // Whether there were enough calls.
    bool happened() const;
};

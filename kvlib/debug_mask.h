// The run-time debug mask: which traces of the support library go to standard output.
#pragma once

#include <cstdint>

// Read from the environment variable "KV_DEBUGGING" (hexadecimal, "0x" optional; unset or unreadable means 0) before
// any other static object of the program is made. Tests and debuggers may set it later; it is not guarded.
extern std::uint64_t BOS_RUNTIME_DEBUG;

// The bits of the mask; a plain enum, since they are combined.
namespace DebugBit {
enum Bit : std::uint64_t {
    kFile = 0x1,
    kLocate = 0x2,
    kLibrary = 0x4,
    kCatalog = 0x8,
    kIniWrite = 0x10,  // updates, and the lists of keys
    kIniRead = 0x20,
    kIniOpen = 0x80,
};
}  // namespace DebugBit

inline bool debugEnabled(DebugBit::Bit bit) {
    return (BOS_RUNTIME_DEBUG & bit) != 0;
}

// Fills the mask when it is made. One object exists, made at static-initialisation time.
class KvRunTimeDebug {
public:
    KvRunTimeDebug();
};

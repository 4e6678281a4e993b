// The current error list of a thread. A function of the support library that fails records errors on the calling
// thread's current list and returns a plain failure code; whoever wants to see them installs a list of its own first.
// Installed lists form a stack per thread. Nothing here throws.
#pragma once

#include <cstdint>

#include "kvlib/error_list.h"
#include "kvlib/per_thread_data.h"

// Everything that happens to the calling thread's current list (slot 0 of its per-thread data). Without a list all of
// it is harmless.
class KvErrorKeeper {
public:
    // Makes `list` current, on top of the one that is; the caller keeps owning it. Pair with giveUpErrorList. The
    // second form uses the slot of the given record, whose thread must not run meanwhile, and leaves the store alone.
    static void setErrorList(KvErrorList* list);
    static void setErrorList(KvErrorList* list, KvThreadInfo* record);

    // Makes the list below current again. Returns the list that was current, null if there was none.
    static KvErrorList* giveUpErrorList();
    static KvErrorList* giveUpErrorList(KvThreadInfo* record);

    // The current list, or null.
    static KvErrorList* currentList();

    // Hands `error` to the current list. A list that does not keep all deletes it when it holds a real error already:
    // the first failure explains the ones it caused. Returns the error when it was added, else the dummy error; never
    // null.
    static KvError* addError(KvError* error);

    // What ramAddMemoryError does: makes the memory error the list's last one, in place of the last error of a list
    // that holds a real one already and does not keep all.
    static void addMemoryError();

    static KvError* getLastError();
    static std::uint16_t getLastErrorNumber();
    static std::int64_t getLastNativeError();
    // Type 1 makes the last error a warning, anything else an error.
    static void setLastErrorType(int errorType);
    // Append to the last error's text and clear its explicit state, which described the text as it was.
    static void appendTextToLastError(const char* text);
    static void appendTextToLastError(const char16_t* text);
    // Takes the last error out and deletes it; nothing when there is none.
    static void clearLastError();
    // What the current list's creator named as its owner; null without a list.
    static void* getOwnerOfList();
};

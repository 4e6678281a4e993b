// How strings, containers and other ground floors report a failure without knowing the error lists. The definitions
// stand above them (kvlib/error_keeper, kvlib/library_errors).
#pragma once

#include <cstdint>

class KvError;

// Records on the calling thread's current error list that memory ran out. Allocates nothing, never fails, does nothing
// without a list, and may be called from any thread and from constructors of static objects.
void ramAddMemoryError() noexcept;

// Records library error `id` on the calling thread's current error list, with the library's own text for it or with
// `text` (UTF-16, or 8-bit text of the locale; null means ""). The list owns the error. The result is never null: it
// is the dummy error, which ignores everything, when there is no list, memory ran out, or the list keeps an earlier
// error instead.
KvError* addError(std::uint16_t id);
KvError* addError(std::uint16_t id, const char16_t* text);
KvError* addError(std::uint16_t id, const char* text);

// The dummy error of the calling thread's current list, or the shared one without a list. Never null.
KvError* currentDummyError();

// What a function that must not throw answers when memory runs out.
#pragma once

#include <new>
#include <stdexcept>
#include <utility>

#include "kvlib/error_report.h"

// Returns what `work` returns; `failure` when it throws for lack of memory (std::length_error is asking for more than
// there can be).
template <typename Result, typename Work>
[[nodiscard]] Result orFailure(Result failure, Work&& work) try {
    return std::forward<Work>(work)();
} catch (const std::bad_alloc&) {
    return failure;
} catch (const std::length_error&) {
    return failure;
}

// The same, and records a memory error before `failure` is returned.
template <typename Result, typename Work>
[[nodiscard]] Result orMemoryError(Result failure, Work&& work) try {
    return std::forward<Work>(work)();
} catch (const std::bad_alloc&) {
    ramAddMemoryError();
    return failure;
} catch (const std::length_error&) {
    ramAddMemoryError();
    return failure;
}

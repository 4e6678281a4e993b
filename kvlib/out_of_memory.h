// What a function that must not throw answers instead, for lack of memory above all.
#pragma once

#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

#include "kvlib/error_report.h"

// Returns what `work` returns; `failure` when it throws.
template <typename Result, typename Work>
[[nodiscard]] Result orFailure(Result failure, Work&& work) try {
    return std::forward<Work>(work)();
} catch (const std::exception&) {
    return failure;
}

// Returns what `work` returns; `failure` when it throws for lack of memory (std::length_error is asking for more than
// there can be), with a memory error recorded.
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

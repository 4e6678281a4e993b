#include "kvlib/debug_mask.h"

#include <cstdlib>

#include "kvlib/per_thread_data.h"

constinit std::uint64_t BOS_RUNTIME_DEBUG = 0;

KvRunTimeDebug::KvRunTimeDebug() {
    if (mdsIsTaskInit() == 0) {
        mdsPerTaskInit();
    }
    const char* value = std::getenv("KV_DEBUGGING");
    BOS_RUNTIME_DEBUG = value == nullptr ? 0 : std::strtoul(value, nullptr, 16);
}

namespace {
// The first of all static objects, so that the static objects of others can trace already.
[[gnu::init_priority(101)]] KvRunTimeDebug RunTimeDebug;
}  // namespace

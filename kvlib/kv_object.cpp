#include "kvlib/kv_object.h"

std::int16_t KvObject::compare(const KvObject* /*other*/) const {
    return 0;
}

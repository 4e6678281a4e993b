// Root class of everything that a container of the support library holds.
#pragma once

#include <cstdint>

class KvObject {
public:
    constexpr KvObject() = default;
    virtual ~KvObject() = default;
    KvObject(const KvObject&) = delete;
    KvObject& operator=(const KvObject&) = delete;

    // Negative, zero or positive: this object sorts before, equal to or after `other`, which is not null and of the
    // same kind. The root class knows no order: all objects are equal.
    virtual std::int16_t compare(const KvObject* other) const;
};

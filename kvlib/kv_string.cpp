#include "kvlib/kv_string.h"

#include <cstdlib>
#include <functional>

#include "catalogs/message_numbers.h"
#include "kvlib/error_report.h"
#include "kvlib/text.h"

KvSubString::KvSubString(const char* text, std::uint64_t length)
    : length_(text == nullptr ? 0 : length), initialLength_(length_), data_(const_cast<char*>(text)) {}

KvString::~KvString() {
    if (owns_) {
        std::free(data_);
    }
}

int KvString::initialize(const char* text) {
    if (text == nullptr) {
        text = "";
    }
    std::uint64_t length = BUTSTLEN(text);
    auto* buffer = static_cast<char*>(std::malloc(length + 1));
    if (buffer == nullptr) {
        ramAddMemoryError();
        return 1;
    }
    BUTMEMCP(buffer, text, length + 1);
    borrow(buffer, length, length + 1);
    owns_ = true;
    terminated_ = true;
    return 0;
}

void KvString::borrow(char* buffer, std::uint64_t length, std::uint64_t capacity) {
    data_ = buffer;
    length_ = length;
    initialLength_ = length;
    capacity_ = capacity;
    owns_ = false;
    terminated_ = false;
}

int KvString::concat(const char* text) {
    return append(text, text == nullptr ? 0 : BUTSTLEN(text));
}

int KvString::concat(const KvSubString& text) {
    return append(text.data(), text.length());
}

int KvString::append(const char* text, std::uint64_t added) {
    if (added > UINT64_MAX - length_ - 1) {
        ramAddMemoryError();
        return 1;
    }
    std::uint64_t needed = length_ + added + 1;
    if (data_ == nullptr || capacity_ < needed) {
        // Growing may move the buffer away under a text that lies in it.
        std::less<> before;
        bool inside = data_ != nullptr && text != nullptr && !before(text, data_) && before(text, data_ + capacity_);
        std::uint64_t offset = inside ? static_cast<std::uint64_t>(text - data_) : 0;
        if (resize(needed) != 0) {
            return 1;
        }
        if (inside) {
            text = data_ + offset;
        }
    }
    if (added != 0) {
        BUTMEMCP(data_ + length_, text, added);
        length_ += added;
        terminated_ = false;
    }
    return 0;
}

int KvString::resize(std::uint64_t n) {
    if (!owns_) {
        addError(LibraryMessage::kStringNotOwned);
        return 1;
    }
    // A request for no bytes would free the buffer instead of shrinking it.
    auto* buffer = static_cast<char*>(n <= PTRDIFF_MAX ? std::realloc(data_, n == 0 ? 1 : n) : nullptr);
    if (buffer == nullptr) {
        ramAddMemoryError();
        return 1;
    }
    data_ = buffer;
    capacity_ = n;
    if (n < length_) {
        length_ = n;
    }
    terminated_ = terminated_ && length_ < n;
    return 0;
}

void KvString::unInitialize() {
    if (owns_) {
        std::free(data_);
    }
    borrow(nullptr, 0, 0);
    // The string can be filled again, and what it allocates then is its own.
    owns_ = true;
}

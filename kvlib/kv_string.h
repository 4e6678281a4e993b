// The growable 8-bit string. Its buffer sizes are exact, because callers hand its buffer on together with its
// capacity. An object belongs to one thread at a time.
#pragma once

#include <cstdint>
#include <string_view>

// A view of characters that somebody else owns; not necessarily terminated, so use the length.
class KvSubString {
public:
    constexpr KvSubString() = default;
    KvSubString(const char* text, std::uint64_t length);

    const char* data() const noexcept { return data_; }
    std::uint64_t length() const noexcept { return length_; }
    std::uint64_t initialLength() const noexcept { return initialLength_; }
    std::string_view view() const noexcept {
        return data_ == nullptr ? std::string_view() : std::string_view(data_, length_);
    }

protected:
    std::uint64_t length_ = 0;
    std::uint64_t initialLength_ = 0;
    char* data_ = nullptr;
};

class KvString : public KvSubString {
public:
    // Empty, without a buffer.
    constexpr KvString() = default;
    ~KvString();
    KvString(const KvString&) = delete;
    KvString& operator=(const KvString&) = delete;

    // Takes a terminated copy of `text` (null means "") in a new buffer of exactly its length + 1 bytes. A buffer held
    // before is not freed, since its address may have been handed out: call unInitialize first to free it.
    // Returns 0, or 1 after recording a memory error, and then nothing has changed.
    int initialize(const char* text);

    // Uses the caller's `buffer` of `capacity` bytes, of which `length` are text, without owning it. A buffer held
    // before is not freed.
    void borrow(char* buffer, std::uint64_t length, std::uint64_t capacity);

    // Appends characters (null appends nothing). Grows the buffer to exactly what is needed plus one byte, but writes
    // no terminator: readers use the length. `text` may lie in this string's own buffer.
    // Returns 0, or 1 with the reason on the error list, and then nothing has changed.
    int concat(const char* text);
    int concat(const KvSubString& text);

    // Makes the buffer exactly `n` bytes; text beyond it is cut off. Returns 0, or 1 with the reason on the error list:
    // a memory error, or 2716 when the buffer is not owned.
    int resize(std::uint64_t n);

    // Frees the buffer when owned and becomes empty.
    void unInitialize();

    std::uint64_t capacity() const noexcept { return capacity_; }
    bool ownsBuffer() const noexcept { return owns_; }
    // True while a zero byte stands behind the text.
    bool isTerminated() const noexcept { return terminated_; }

private:
    int append(const char* text, std::uint64_t added);

    bool terminated_ = false;
    std::uint64_t capacity_ = 0;
    bool owns_ = true;
};

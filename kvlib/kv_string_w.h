// UTF-16 strings, and UTF-16 message texts with places for parameters. No public function throws: a failed allocation
// is recorded as a memory error. An object belongs to one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvlib/text.h"

// A view of UTF-16 text that somebody else owns; not necessarily terminated, so use the length.
class KvSubStringW {
public:
    constexpr KvSubStringW() = default;
    constexpr KvSubStringW(const char16_t* text, std::uint64_t length)
        : data_(text), length_(text == nullptr ? 0 : length) {}

    const char16_t* data() const noexcept { return data_; }
    std::uint64_t length() const noexcept { return length_; }
    std::u16string_view view() const noexcept {
        return data_ == nullptr ? std::u16string_view() : std::u16string_view(data_, length_);
    }

protected:
    const char16_t* data_ = nullptr;
    std::uint64_t length_ = 0;
};

// A UTF-16 string that owns its text. The text is always terminated.
class KvStringW : public KvSubStringW {
public:
    constexpr KvStringW() = default;
    ~KvStringW() = default;
    KvStringW(const KvStringW&) = delete;
    KvStringW& operator=(const KvStringW&) = delete;

    // Takes a copy of `text`. Returns 0, or 1 after recording a memory error, and then nothing has changed.
    int initialize(std::u16string_view text);
    int initialize(std::string_view text, kvCPType cp);

    // Appends `text`, which may be part of this string. Returns as initialize does.
    int concat(std::u16string_view text);
    int concat(std::string_view text, kvCPType cp);

    void clear();
    bool isEmpty() const noexcept { return length_ == 0; }
    const char16_t* text() const noexcept { return text_ ? text_->c_str() : u""; }

protected:
    // Makes `text` the text. Unlike the rest it throws std::bad_alloc, and then nothing has changed.
    void adopt(std::u16string&& text);

private:
    // Held by pointer, since not every compiler can build an empty std::u16string into a static object.
    std::unique_ptr<std::u16string> text_;
};

// A message text with places written %1, %2 and so on, filled in the order of their numbers, so that a translation can
// arrange them as its grammar asks. A place may stand several times. Places that are not filled stay as they are.
// What was filled in or appended is plain text: a %2 in it is no place.
class KvParamStringW : private KvStringW {
public:
    constexpr KvParamStringW() = default;

    // Takes a copy of `text` with all places unfilled. Returns 0, or 1 after recording a memory error.
    int initialize(std::u16string_view text);
    int initialize(std::string_view text, kvCPType cp);

    // Fills the next place; a text that lacks it, as when the catalog is missing, stays as it is.
    // Returns 0, or 1 after recording a memory error, and then nothing has changed.
    int setParam(std::u16string_view value);
    int setParam(std::string_view value, kvCPType cp);

    // Appends plain text. Returns as setParam does.
    int concat(std::u16string_view text);
    int concat(std::string_view text, kvCPType cp);

    using KvStringW::data;
    using KvStringW::isEmpty;
    using KvStringW::length;
    using KvStringW::text;
    using KvStringW::view;

private:
    // The part of the text, begin to end, that was filled in or appended.
    struct PlainRange {
        std::size_t begin;
        std::size_t end;
    };

    std::vector<PlainRange> plain_;
    unsigned nextPlace_ = 1;
};

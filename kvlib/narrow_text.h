// For functions that take UTF-16 and hand on to their twins that take 8-bit text.
#pragma once

#include <optional>
#include <string>

#include "kvlib/text.h"

// The text in the code page of the locale, as long as this object lives; null stays null. Throws std::bad_alloc.
class Narrow {
public:
    explicit Narrow(const char16_t* text) {
        if (text != nullptr) {
            text_ = fromUtf16(text, kCPLocale);
        }
    }
    const char* get() const { return text_ ? text_->c_str() : nullptr; }

private:
    std::optional<std::string> text_;
};

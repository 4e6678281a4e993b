// A UTF-16 text of a caller as the 8-bit text that the UTF-16 twins hand on.
#pragma once

#include <optional>
#include <string>

#include "kvlib/text.h"

// The text in the code page of the locale, as long as this object lives; null stays null. Raises std::bad_alloc.
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

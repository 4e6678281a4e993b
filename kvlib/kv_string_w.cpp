#include "kvlib/kv_string_w.h"

#include <utility>

#include "kvlib/out_of_memory.h"

namespace {

// Makes a change that throws for lack of memory. Returns 0, or 1 after recording a memory error.
template <typename Change>
int changed(Change change) {
    return orMemoryError(1, [&] {
        change();
        return 0;
    });
}

bool isDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

// The end of the place that begins at `begin`, a percent sign, when it is the one of `number`; else `begin`. A longer
// number is another place: %12 does not hold %1.
std::size_t placeEnd(std::u16string_view text, std::size_t begin, unsigned number) {
    std::u16string digits;
    for (unsigned rest = number; rest != 0; rest /= 10) {
        digits.insert(digits.begin(), static_cast<char16_t>(u'0' + rest % 10));
    }
    std::size_t end = begin + 1 + digits.size();
    bool fits = text.substr(begin + 1, digits.size()) == digits && (end >= text.size() || !isDigit(text[end]));
    return fits ? end : begin;
}

}  // namespace

int KvStringW::initialize(std::u16string_view text) {
    return changed([&] { adopt(std::u16string(text)); });
}

int KvStringW::initialize(std::string_view text, kvCPType cp) {
    return changed([&] { adopt(toUtf16(text, cp)); });
}

int KvStringW::concat(std::u16string_view text) {
    return changed([&] {
        std::u16string joined;
        joined.reserve(length_ + text.size());
        joined.append(view()).append(text);
        adopt(std::move(joined));
    });
}

int KvStringW::concat(std::string_view text, kvCPType cp) {
    std::u16string wide;
    return changed([&] { wide = toUtf16(text, cp); }) != 0 ? 1 : concat(wide);
}

void KvStringW::clear() {
    text_.reset();
    data_ = nullptr;
    length_ = 0;
}

void KvStringW::adopt(std::u16string&& text) {
    if (text_) {
        *text_ = std::move(text);
    } else {
        text_ = std::make_unique<std::u16string>(std::move(text));
    }
    data_ = text_->data();
    length_ = text_->size();
}

int KvParamStringW::initialize(std::u16string_view text) {
    if (KvStringW::initialize(text) != 0) {
        return 1;
    }
    plain_.clear();
    nextPlace_ = 1;
    return 0;
}

int KvParamStringW::initialize(std::string_view text, kvCPType cp) {
    std::u16string wide;
    return changed([&] { wide = toUtf16(text, cp); }) != 0 ? 1 : initialize(wide);
}

int KvParamStringW::setParam(std::u16string_view value) {
    return changed([&] {
        const std::u16string_view old = view();
        std::u16string filled;
        std::vector<PlainRange> plain;
        auto appendPlain = [&](std::u16string_view part) {
            plain.push_back({filled.size(), filled.size() + part.size()});
            filled += part;
        };
        auto nextPlain = plain_.begin();
        std::size_t position = 0;
        while (position < old.size()) {
            if (nextPlain != plain_.end() && position == nextPlain->begin) {
                appendPlain(old.substr(position, nextPlain->end - position));
                position = nextPlain->end;
                ++nextPlain;
                continue;
            }
            std::size_t limit = nextPlain == plain_.end() ? old.size() : nextPlain->begin;
            std::size_t end = old[position] == u'%' ? placeEnd(old.substr(0, limit), position, nextPlace_) : position;
            if (end == position) {
                filled += old[position++];
            } else {
                appendPlain(value);
                position = end;
            }
        }
        adopt(std::move(filled));
        plain_ = std::move(plain);
        nextPlace_++;
    });
}

int KvParamStringW::setParam(std::string_view value, kvCPType cp) {
    std::u16string wide;
    return changed([&] { wide = toUtf16(value, cp); }) != 0 ? 1 : setParam(wide);
}

int KvParamStringW::concat(std::u16string_view text) {
    return changed([&] {
        std::size_t begin = length();
        plain_.reserve(plain_.size() + 1);
        std::u16string joined(view());
        joined += text;
        adopt(std::move(joined));
        plain_.push_back({begin, length()});
    });
}

int KvParamStringW::concat(std::string_view text, kvCPType cp) {
    std::u16string wide;
    return changed([&] { wide = toUtf16(text, cp); }) != 0 ? 1 : concat(wide);
}

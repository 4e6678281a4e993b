#include "kvlib/text.h"

#include <unicode/uchar.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>

namespace {

using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

int sign(int value) {
    return (value > 0) - (value < 0);
}

bool isByteBetween(unsigned char c, unsigned char low, unsigned char high) {
    return c >= low && c <= high;
}

// Bytes of the UTF-8 sequence at `s`, at most `available`; 1 for what is no sequence, so that stepping resumes at the
// next byte.
std::size_t utf8SequenceLength(const char* s, std::size_t available) {
    auto lead = static_cast<unsigned char>(*s);
    std::size_t length = 1;
    if (isByteBetween(lead, 0xC2, 0xDF)) {
        length = 2;
    } else if (isByteBetween(lead, 0xE0, 0xEF)) {
        length = 3;
    } else if (isByteBetween(lead, 0xF0, 0xF4)) {
        length = 4;
    }
    if (length > available) {
        return 1;
    }
    for (std::size_t i = 1; i < length; i++) {
        if ((static_cast<unsigned char>(s[i]) & 0xC0) != 0x80) {
            return 1;
        }
    }
    return length;
}

// The same for the encoding of the process locale.
std::size_t localeSequenceLength(const char* s, std::size_t available) {
    std::mbstate_t state{};
    const std::size_t length = std::mbrlen(s, available, &state);
    return length > 1 && length <= available ? length : 1;
}

// Whether more bytes must follow `c` in the encoding of the process locale.
bool isIncompleteInLocale(char c) {
    constexpr auto kIncomplete = static_cast<std::size_t>(-2);
    std::mbstate_t state{};
    return std::mbrlen(&c, 1, &state) == kIncomplete;
}

Converter openConverter(kvCPType cp) {
    const char* name = nullptr;  // ICU's default converter
    switch (cp) {
        case kCPLocale:
        case kCPUtf16:
            break;
        case kCPUtf8:
            name = "UTF-8";
            break;
        case kCPShiftJis:
            name = "windows-932";
            break;
        case kCPGbk:
            name = "windows-936";
            break;
        case kCPKorean:
            name = "windows-949";
            break;
        case kCPBig5:
            name = "windows-950";
            break;
    }
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(ucnv_open(name, &status), &ucnv_close);
    if (U_FAILURE(status) != 0) {
        converter.reset();
    }
    return converter;
}

bool isAscii(char c) {
    return static_cast<signed char>(c) >= 0;
}

char upperOfAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string upperOfByte(char c) {
    std::string text(1, c);
    strUpper(text.data());
    return text;
}

}  // namespace

void BUTMEMCP(void* dst, const void* src, std::size_t n) noexcept {
    if (n != 0) {
        std::memmove(dst, src, n);
    }
}

void BUTMMCPD(void* dst, const void* src, std::size_t n) noexcept {
    BUTMEMCP(dst, src, n);
}

int BUTMMCMP(const void* a, const void* b, std::size_t n) noexcept {
    return n == 0 ? 0 : sign(std::memcmp(a, b, n));
}

char* BUTSTCPY(char* dst, const char* src) noexcept {
    return stpcpy(dst, src);
}

char* BUTSTCAT(char* dst, const char* src) noexcept {
    return stpcpy(dst + BUTSTLEN(dst), src);
}

int BUTSTCMP(const char* a, const char* b) noexcept {
    return sign(std::strcmp(a, b));
}

std::size_t BUTSTLEN(const char* s) noexcept {
    return std::strlen(s);
}

void strCopy(char* dst, std::size_t size, const char* src) noexcept {
    if (size == 0) {
        return;
    }
    // Besides the terminator of a shorter text, the last byte of the buffer is zero for readers that trust its size.
    dst[size - 1] = '\0';
    std::size_t copied = strnlen(src, size - 1);
    BUTMEMCP(dst, src, copied);
    dst[copied] = '\0';
}

char* strCopy(char* dst, const char* src, std::size_t n) noexcept {
    BUTMEMCP(dst, src, n);
    dst[n] = '\0';
    return dst + n;
}

std::size_t copyCut(char* dst, std::size_t size, std::string_view text) noexcept {
    if (size == 0) {
        return 0;
    }
    const std::size_t copied = std::min(text.size(), size - 1);
    strCopy(dst, text.data(), copied);
    return copied;
}

bool copyWhole(char* dst, std::size_t size, std::string_view text) noexcept {
    const bool fits = text.size() < size;
    copyCut(dst, size, fits ? text : std::string_view());
    return fits;
}

std::size_t strLen(const char16_t* s) noexcept {
    return std::u16string_view(s).size();
}

bool kvIsLeadByte(char c, kvCPType cp) noexcept {
    auto byte = static_cast<unsigned char>(c);
    switch (cp) {
        case kCPShiftJis:
            // The bytes between the two ranges are half-width katakana, single bytes.
            return isByteBetween(byte, 0x81, 0x9F) || isByteBetween(byte, 0xE0, 0xFC);
        case kCPGbk:
        case kCPKorean:
        case kCPBig5:
            return isByteBetween(byte, 0x81, 0xFE);
        case kCPLocale:
            return MB_CUR_MAX == 2 && isIncompleteInLocale(c);
        case kCPUtf8:
        case kCPUtf16:
            break;
    }
    return false;
}

bool kvIsWhiteSpace(char c, kvCPType /*cp*/) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

const char* kvCharNext(const char* s, kvCPType cp) noexcept {
    if (*s == '\0') {
        return s;
    }
    // No character is longer than four bytes.
    return kvCharNext(s, s + strnlen(s, 4), cp);
}

char* kvCharNext(char* s, kvCPType cp) noexcept {
    return s + (kvCharNext(static_cast<const char*>(s), cp) - s);
}

const char* kvCharNext(const char* s, const char* end, kvCPType cp) noexcept {
    if (s >= end) {
        return s;
    }
    auto available = static_cast<std::size_t>(end - s);
    if (cp == kCPUtf8) {
        return s + utf8SequenceLength(s, available);
    }
    if (cp == kCPLocale) {
        return s + localeSequenceLength(s, available);
    }
    return s + (available > 1 && kvIsLeadByte(*s, cp) ? 2 : 1);
}

const char* strFind(const char* s, char ch, kvCPType cp) noexcept {
    for (; *s != '\0'; s = kvCharNext(s, cp)) {
        if (*s == ch) {
            return s;
        }
    }
    return nullptr;
}

const char* strFind(const char* s, const char* sub, kvCPType cp) noexcept {
    return strFind(s, BUTSTLEN(s), sub, BUTSTLEN(sub), cp);
}

const char* strFind(const char* s, std::size_t sLength, const char* sub, std::size_t subLength, kvCPType cp) noexcept {
    if (subLength == 0 || subLength > sLength) {
        return nullptr;
    }
    const char* end = s + sLength;
    const char* last = end - subLength;
    for (const char* position = s; position <= last; position = kvCharNext(position, end, cp)) {
        if (*position == *sub && BUTMMCMP(position + 1, sub + 1, subLength - 1) == 0) {
            return position;
        }
    }
    return nullptr;
}

const char* strFindReverse(const char* s, char ch, kvCPType cp) noexcept {
    const char* last = nullptr;
    for (const char* hit = strFind(s, ch, cp); hit != nullptr; hit = strFind(kvCharNext(hit, cp), ch, cp)) {
        last = hit;
    }
    return last;
}

void strRightTrim(char* s, kvCPType cp) noexcept {
    char* end = s;
    while (*s != '\0') {
        char* next = kvCharNext(s, cp);
        if (!kvIsWhiteSpace(*s, cp)) {
            end = next;
        }
        s = next;
    }
    *end = '\0';
}

int strCompareCi(const char* a, const char* b, kvCPType cp) {
    for (;;) {
        // In no code page does a longer character begin with a byte of ASCII.
        if (isAscii(*a) && isAscii(*b)) {
            const int order = upperOfAscii(*a) - upperOfAscii(*b);
            if (order != 0 || *a == '\0') {
                return sign(order);
            }
            a++;
            b++;
            continue;
        }
        auto size = static_cast<std::size_t>(kvCharNext(a, cp) - a);
        if (size > 1) {
            int order = sign(std::strncmp(a, b, size));
            if (order != 0) {
                return order;
            }
            a += size;
            b += size;
            continue;
        }
        if (*a != *b) {
            int order = BUTSTCMP(upperOfByte(*a).c_str(), upperOfByte(*b).c_str());
            if (order != 0) {
                return order;
            }
        }
        a++;
        b++;
    }
}

void strUpper(char* s) noexcept {
    const std::size_t longest = MB_CUR_MAX;
    for (; *s != '\0'; s = kvCharNext(s, kCPLocale)) {
        wchar_t character = 0;
        std::mbstate_t state{};
        std::size_t size = std::mbrtowc(&character, s, strnlen(s, longest), &state);
        if (size == 0 || size > longest) {
            continue;
        }
        auto upper = static_cast<wchar_t>(u_toupper(static_cast<UChar32>(character)));
        char encoded[MB_LEN_MAX];
        state = {};
        // A form of another length would shift the text or overwrite what follows.
        if (upper != character && std::wcrtomb(encoded, upper, &state) == size) {
            std::memcpy(s, encoded, size);
        }
    }
}

std::u16string toUtf16(std::string_view text, kvCPType cp) {
    Converter converter = openConverter(cp);
    std::u16string result;
    if (!converter) {
        // Without its converter a code page is known to agree with ASCII only.
        for (char c : text) {
            result += static_cast<unsigned char>(c) < 0x80 ? static_cast<char16_t>(c) : u'\uFFFD';
        }
        return result;
    }
    const char* source = text.data();
    const char* sourceEnd = source + text.size();
    UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
    while (status == U_BUFFER_OVERFLOW_ERROR) {
        char16_t chunk[512];
        char16_t* target = chunk;
        status = U_ZERO_ERROR;
        ucnv_toUnicode(converter.get(), &target, std::end(chunk), &source, sourceEnd, nullptr, 1, &status);
        result.append(chunk, target);
    }
    return result;
}

std::string fromUtf16(std::u16string_view text, kvCPType cp) {
    Converter converter = openConverter(cp);
    std::string result;
    if (!converter) {
        for (char16_t unit : text) {
            result += unit < 0x80 ? static_cast<char>(unit) : '?';
        }
        return result;
    }
    const char16_t* source = text.data();
    const char16_t* sourceEnd = source + text.size();
    UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
    while (status == U_BUFFER_OVERFLOW_ERROR) {
        char chunk[512];
        char* target = chunk;
        status = U_ZERO_ERROR;
        ucnv_fromUnicode(converter.get(), &target, std::end(chunk), &source, sourceEnd, nullptr, 1, &status);
        result.append(chunk, target);
    }
    return result;
}
